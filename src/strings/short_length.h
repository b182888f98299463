// The length of a short text, found without a call. Loads are aligned 16-byte
// blocks, and a block is loaded only when its first byte inside the text
// could still be read by a byte loop, so no load crosses into a page the
// text does not reach. The bytes of a block beyond the text are loaded but
// never used. Sanitizers would see those loads as out of bounds, so their
// builds, and builds without SSE2, measure with the C library.
#ifndef ZUUTL_STRINGS_SHORT_LENGTH_H
#define ZUUTL_STRINGS_SHORT_LENGTH_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZU_SHORT_LENGTH_BLOCKS 1
#include <emmintrin.h>
#endif

namespace zu::bytes {

// strnlen(text, limit), best when limit is small.
inline std::size_t shortLength(const unsigned char* text, std::size_t limit) {
#ifdef ZU_SHORT_LENGTH_BLOCKS
  if (limit == 0) return 0;  // nothing may be read, not even the first block
  constexpr std::size_t kBlock = 16;
  const std::size_t skew = reinterpret_cast<std::uintptr_t>(text) & (kBlock - 1);
  const __m128i* block = reinterpret_cast<const __m128i*>(text - skew);
  const __m128i zero = _mm_setzero_si128();
  auto nulsIn = [&zero](const __m128i* b) {
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_load_si128(b), zero)));
  };
  unsigned nuls = nulsIn(block) >> skew;
  std::size_t done = 0;
  std::size_t next = kBlock - skew;
  while (nuls == 0) {
    if (next >= limit) return limit;
    done = next;
    next += kBlock;
    nuls = nulsIn(++block);
  }
  const std::size_t length = done + static_cast<std::size_t>(__builtin_ctz(nuls));
  return length < limit ? length : limit;
#else
  return strnlen(reinterpret_cast<const char*>(text), limit);
#endif
}

}  // namespace zu::bytes

#endif
