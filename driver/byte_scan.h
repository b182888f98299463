// Block scans over a record's bytes: sixteen at a step through the
// compiler's generic vectors (plain code where the target has none), so a
// field costs a few steps instead of a test per byte. Loads go through
// memcpy and read nothing outside [from, from + length).
#ifndef ZUCSV_BYTE_SCAN_H
#define ZUCSV_BYTE_SCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zucsv {

// The index of the first byte equal to `a`, `b` or `c`, or `length` when
// there is none.
inline std::size_t findAnyOf3(const unsigned char* from, std::size_t length, unsigned char a, unsigned char b,
                              unsigned char c) {
  typedef unsigned char Bytes __attribute__((vector_size(16)));
  constexpr std::size_t kStep = sizeof(Bytes);
  std::size_t at = 0;
  for (; at + kStep <= length; at += kStep) {
    Bytes v;
    std::memcpy(&v, from + at, sizeof v);
    const Bytes hit = reinterpret_cast<Bytes>((v == a) | (v == b) | (v == c));
    std::uint64_t halves[2];
    std::memcpy(halves, &hit, sizeof halves);
    if ((halves[0] | halves[1]) == 0) continue;
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    // A hit is a byte of all ones; the first one's lowest bit tells where.
    const unsigned bit = halves[0] != 0 ? static_cast<unsigned>(__builtin_ctzll(halves[0]))
                                        : 64 + static_cast<unsigned>(__builtin_ctzll(halves[1]));
    return at + bit / 8;
#else
    break;
#endif
  }
  for (; at < length; ++at) {
    const unsigned char x = from[at];
    if (x == a || x == b || x == c) return at;
  }
  return length;
}

}  // namespace zucsv

#endif
