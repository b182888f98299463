// The process environment, read in place.
#include <cstring>

#include "frame/semaphore.h"
#include "platform/platform.h"

using zu::platform::sys;

unsigned char* bosGetEnv(const unsigned char* name) {
  char** block = sys.environment();
  if (block == nullptr || name == nullptr) return nullptr;
  std::size_t length = std::strlen(reinterpret_cast<const char*>(name));
  for (char** entry = block; *entry != nullptr; ++entry) {
    // Only the name's bytes are compared, and the byte after them is taken
    // to be '=' unseen: a longer name that starts the same matches too.
    if (std::strncmp(*entry, reinterpret_cast<const char*>(name), length) == 0) {
      char* value = *entry + length;
      // An entry that is nothing but the name has no byte to skip.
      return reinterpret_cast<unsigned char*>(*value != '\0' ? value + 1 : value);
    }
  }
  return nullptr;
}
