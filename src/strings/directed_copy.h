// Copies with the result of a byte-at-a-time loop in a given direction,
// overlap included, at the speed of the C library's block moves.
#ifndef ZUUTL_STRINGS_DIRECTED_COPY_H
#define ZUUTL_STRINGS_DIRECTED_COPY_H

#include <cstddef>

namespace zu::bytes {

// As a loop from the first byte to the last.
void copyAscending(unsigned char* dst, const unsigned char* src, std::size_t count);
// As a loop from the last byte to the first.
void copyDescending(unsigned char* dst, const unsigned char* src, std::size_t count);

}  // namespace zu::bytes

#endif
