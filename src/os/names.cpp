#include "os/names.h"

#include <cstring>

#include "platform/charset.h"

namespace zu::os {

void upperInPlace(unsigned char* text) {
  for (; *text != '\0'; ++text) *text = platform::upperCase(*text);
}

bool prepareName(const unsigned char* name, unsigned char* buffer) {
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(name));
  if (length > kNameMax) return false;
  std::memcpy(buffer, name, length + 1);
  upperInPlace(buffer);
  return true;
}

}  // namespace zu::os
