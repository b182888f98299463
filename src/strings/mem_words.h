// The library's own copy, fill, exchange and comparison of byte ranges with
// 32-bit counts. Not exported. Inline, because the sort's inner loops run
// on the exchange and the comparison.
#ifndef ZUUTL_STRINGS_MEM_WORDS_H
#define ZUUTL_STRINGS_MEM_WORDS_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace zu {

// Ascending, so a destination below its source is safe too.
inline void memCopy(void* dst, const void* src, std::uint32_t count) {
  std::memmove(dst, src, count);
}

inline void memFill(void* dst, unsigned char value, std::uint32_t count) {
  std::memset(dst, value, count);
}

// Exchanges two ranges that are the same or do not overlap, a word at a
// time through registers.
inline void memSwap(unsigned char* a, unsigned char* b, std::uint32_t count) {
  for (; count >= sizeof(std::uint64_t); count -= sizeof(std::uint64_t)) {
    std::uint64_t x;
    std::uint64_t y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    std::memcpy(a, &y, sizeof y);
    std::memcpy(b, &x, sizeof x);
    a += sizeof x;
    b += sizeof y;
  }
  for (; count != 0; --count, ++a, ++b) {
    const unsigned char held = *a;
    *a = *b;
    *b = held;
  }
}

// -1, 0 or 1 as the bytes compare unsigned, the first most significant.
// The leading word decides most comparisons without a call.
inline short memOrder(const unsigned char* a, const unsigned char* b, std::uint32_t count) {
  if (count >= sizeof(std::uint64_t)) {
    std::uint64_t x;
    std::uint64_t y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    if (x != y) {
      if constexpr (std::endian::native == std::endian::little) {
        x = __builtin_bswap64(x);
        y = __builtin_bswap64(y);
      }
      return x < y ? -1 : 1;
    }
    a += sizeof x;
    b += sizeof y;
    count -= sizeof(std::uint64_t);
    if (count > sizeof(std::uint64_t)) {
      const int order = std::memcmp(a, b, count);
      return order < 0 ? -1 : (order > 0 ? 1 : 0);
    }
  }
  if (count >= sizeof(std::uint32_t)) {
    std::uint32_t x;
    std::uint32_t y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    if (x != y) {
      if constexpr (std::endian::native == std::endian::little) {
        x = __builtin_bswap32(x);
        y = __builtin_bswap32(y);
      }
      return x < y ? -1 : 1;
    }
    a += sizeof x;
    b += sizeof y;
    count -= sizeof(std::uint32_t);
  }
  for (; count != 0; --count, ++a, ++b) {
    if (*a != *b) return *a < *b ? -1 : 1;
  }
  return 0;
}

}  // namespace zu

#endif
