// Copies with the result of a byte-at-a-time loop in a given direction,
// overlap included, at the speed of the C library's block moves.
//
// A byte loop that runs into its own output repeats what it has written: an
// ascending copy to `src + d` makes the first d source bytes recur with
// period d, and a descending copy to `src - d` the last d. Every other case
// is exactly what memmove does, and is decided inline so that small copies
// cost no more than memmove's own call.
#ifndef ZUUTL_STRINGS_DIRECTED_COPY_H
#define ZUUTL_STRINGS_DIRECTED_COPY_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "strings/small_move.h"

namespace zu::bytes {

// The pattern cases; `period` is below `count` and not 0.
void repeatAscending(unsigned char* dst, const unsigned char* src, std::size_t period,
                     std::size_t count);
void repeatDescending(unsigned char* dst, const unsigned char* src, std::size_t period,
                      std::size_t count);

inline std::size_t distance(const void* from, const void* to) {
  return reinterpret_cast<std::uintptr_t>(to) - reinterpret_cast<std::uintptr_t>(from);
}

// Where the copy runs into its own output, lays the pattern down and says
// so; otherwise leaves the copy to memmove's equal.
inline bool repeatedAscending(unsigned char* dst, const unsigned char* src, std::size_t count) {
  const std::size_t period = distance(src, dst);  // wraps to a huge value below src
  if (period == 0 || period >= count) [[likely]] return false;
  repeatAscending(dst, src, period, count);
  return true;
}

inline bool repeatedDescending(unsigned char* dst, const unsigned char* src, std::size_t count) {
  const std::size_t period = distance(dst, src);
  if (period == 0 || period >= count) [[likely]] return false;
  repeatDescending(dst, src, period, count);
  return true;
}

// As a loop from the first byte to the last.
inline void copyAscending(unsigned char* dst, const unsigned char* src, std::size_t count) {
  if (!repeatedAscending(dst, src, count)) move(dst, src, count);
}

// As a loop from the last byte to the first.
inline void copyDescending(unsigned char* dst, const unsigned char* src, std::size_t count) {
  if (!repeatedDescending(dst, src, count)) move(dst, src, count);
}

}  // namespace zu::bytes

#endif
