// Names on their way to the system: copied into a buffer of the layer's
// size, upper-cased. The code page conversion is the identity on this
// platform, which has one character set.
#ifndef ZUUTL_OS_NAMES_H
#define ZUUTL_OS_NAMES_H

#include <cstddef>

namespace zu::os {

// Buffers of names and paths: 255 characters and a NUL.
inline constexpr std::size_t kNameBufferSize = 256;
inline constexpr std::size_t kNameMax = kNameBufferSize - 1;

// Upper-cases `text` in place.
void upperInPlace(unsigned char* text);
// Copies `name` into `buffer` (kNameBufferSize bytes) upper-cased; false,
// with nothing copied, when the name is longer than kNameMax.
bool prepareName(const unsigned char* name, unsigned char* buffer);

}  // namespace zu::os

#endif
