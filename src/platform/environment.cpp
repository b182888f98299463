#include "platform/environment.h"

#include <cstring>

#include "platform/host.h"

namespace zu::platform {

unsigned char* environmentValue(const unsigned char* name) {
  char** block = host.environ();
  if (block == nullptr || name == nullptr) return nullptr;
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(name));
  for (char** entry = block; *entry != nullptr; ++entry) {
    if (std::strncmp(*entry, reinterpret_cast<const char*>(name), length) == 0) {
      char* value = *entry + length;
      // An entry that is nothing but the name has no byte to skip.
      return reinterpret_cast<unsigned char*>(*value != '\0' ? value + 1 : value);
    }
  }
  return nullptr;
}

}  // namespace zu::platform
