// A move of up to kSmallMove bytes without a call: every source byte is
// loaded before any is stored, in overlapping pieces from both ends, so it
// has memmove's result for any overlap. Short copies are the common case
// for the text copies, and at that size the call into the C library costs
// as much as the copy itself.
#ifndef ZUUTL_STRINGS_SMALL_MOVE_H
#define ZUUTL_STRINGS_SMALL_MOVE_H

#include <cstddef>
#include <cstring>

namespace zu::bytes {

inline constexpr std::size_t kSmallMove = 64;

namespace detail {

template <std::size_t N>
struct Piece {
  unsigned char b[N];
};

// Moves n bytes, N <= n <= 2N, as a piece from the front and one from the back.
template <std::size_t N>
inline void moveEnds(unsigned char* dst, const unsigned char* src, std::size_t n) {
  Piece<N> head, tail;
  std::memcpy(&head, src, N);
  std::memcpy(&tail, src + n - N, N);
  std::memcpy(dst, &head, N);
  std::memcpy(dst + n - N, &tail, N);
}

}  // namespace detail

// n must not exceed kSmallMove.
inline void smallMove(unsigned char* dst, const unsigned char* src, std::size_t n) {
  using detail::moveEnds;
  using detail::Piece;
  if (n >= 16) {
    if (n <= 32) {
      moveEnds<16>(dst, src, n);
    } else {
      // Four 16-byte pieces: a 32-byte piece would go through the stack.
      Piece<16> a, b, c, d;
      std::memcpy(&a, src, 16);
      std::memcpy(&b, src + 16, 16);
      std::memcpy(&c, src + n - 32, 16);
      std::memcpy(&d, src + n - 16, 16);
      std::memcpy(dst, &a, 16);
      std::memcpy(dst + 16, &b, 16);
      std::memcpy(dst + n - 32, &c, 16);
      std::memcpy(dst + n - 16, &d, 16);
    }
  } else if (n >= 8) {
    moveEnds<8>(dst, src, n);
  } else if (n >= 4) {
    moveEnds<4>(dst, src, n);
  } else if (n >= 2) {
    moveEnds<2>(dst, src, n);
  } else if (n == 1) {
    *dst = *src;
  }
}

// memmove, with the short case kept inline.
inline void move(unsigned char* dst, const unsigned char* src, std::size_t n) {
  if (n <= kSmallMove) {
    smallMove(dst, src, n);
  } else {
    std::memmove(dst, src, n);
  }
}

}  // namespace zu::bytes

#endif
