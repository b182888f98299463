// The copies' 32-byte bodies. Every function here carries the target itself
// rather than the file being built for it, so no inline function it shares
// with the rest of the library is ever compiled for a processor the
// library does not require.
#include "strings/wide_copy.h"

#if ZU_WIDE_COPIES

#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "strings/directed_copy.h"
#include "strings/small_move.h"

#define ZU_WIDE [[gnu::target("avx2")]]
// The bodies the loader chooses start on a cache line, as the C library's
// do: a short copy is a handful of instructions, and where they fall across
// a line boundary cost it as much as anything it does.
#define ZU_WIDE_ENTRY [[gnu::target("avx2"), gnu::aligned(kEntryAlign)]]
// For what reads whole aligned blocks around a text: the bytes outside it
// belong to someone else, so no sanitizer may check them.
#define ZU_WIDE_SCAN [[gnu::target("avx2"), gnu::no_sanitize_address, gnu::no_sanitize_thread]]

namespace zu::bytes::wide {
namespace {

constexpr std::size_t kEntryAlign = 64;
constexpr std::size_t kLane = 32;

ZU_WIDE inline __m256i load(const unsigned char* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

ZU_WIDE_SCAN inline __m256i loadAligned(const unsigned char* p) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(p));
}

ZU_WIDE inline void store(unsigned char* p, __m256i v) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

// Copies up to this many bytes are done inline, in at most four pieces.
constexpr std::size_t kInlineMove = 4 * kLane;
// The bounded copy's stride through a long text.
constexpr std::size_t kRun = 4 * kLane;

// memmove, with everything up to kInlineMove done inline: all pieces are
// loaded before any is stored.
[[gnu::target("avx2"), gnu::always_inline]] inline void move(unsigned char* dst,
                                                            const unsigned char* src,
                                                            std::size_t n) {
  if (n < kLane) {
    smallMove(dst, src, n);
  } else if (n <= 2 * kLane) [[likely]] {
    const __m256i head = load(src);
    const __m256i tail = load(src + n - kLane);
    store(dst, head);
    store(dst + n - kLane, tail);
  } else if (n <= kInlineMove) {
    const __m256i a = load(src);
    const __m256i b = load(src + kLane);
    const __m256i c = load(src + n - 2 * kLane);
    const __m256i d = load(src + n - kLane);
    store(dst, a);
    store(dst + kLane, b);
    store(dst + n - 2 * kLane, c);
    store(dst + n - kLane, d);
  } else {
    std::memmove(dst, src, n);
  }
}

// Bit i set where byte i is NUL.
ZU_WIDE inline std::uint32_t nulBits(__m256i v) {
  return static_cast<std::uint32_t>(
      _mm256_movemask_epi8(_mm256_cmpeq_epi8(v, _mm256_setzero_si256())));
}

ZU_WIDE_SCAN inline std::uint32_t nulBits(const unsigned char* alignedBlock) {
  return nulBits(loadAligned(alignedBlock));
}

// The bounded copy's step: takes the next aligned block and stores it if it
// holds no NUL and lies within the room. False when the copy's last piece
// is left: `bits` then has the block's NUL, if any, and `seen` where it
// starts.
ZU_WIDE_SCAN inline bool wholeBlock(unsigned char* dst, const unsigned char*& block,
                                   std::uint32_t& bits, std::size_t& seen, std::size_t room) {
  block += kLane;
  const __m256i v = loadAligned(block);
  bits = nulBits(v);
  if (bits != 0 || seen + kLane > room) return false;
  store(dst + seen, v);
  seen += kLane;
  return seen != room;
}

}  // namespace

ZU_WIDE_ENTRY void butMemcp(unsigned char* dst, const unsigned char* src, unsigned short count) {
  if (!repeatedAscending(dst, src, count)) move(dst, src, count);
}

ZU_WIDE_ENTRY void butMmcpd(unsigned char* dst, const unsigned char* src, unsigned short count) {
  if (!repeatedDescending(dst, src, count)) move(dst, src, count);
}

ZU_WIDE_ENTRY void memCopyHuge(void* dst, const void* src, std::uint32_t count) {
  auto* to = static_cast<unsigned char*>(dst);
  const auto* from = static_cast<const unsigned char*>(src);
  if (!repeatedAscending(to, from, count)) move(to, from, count);
}

// A long copy goes to the 16-byte body whole, so this one needs no frame.
ZU_WIDE_ENTRY unsigned char* strCopy(unsigned char* dst, const unsigned char* src,
                                     std::uint32_t count) {
  if (count > kInlineMove) return countedCopy(dst, src, count);
  move(dst, src, count);
  dst[count] = 0;
  return dst + count;
}

// The NUL is looked for in aligned blocks, which never cross into the next
// page, so reading the rest of the block past the NUL, or before the text,
// cannot fault.
ZU_WIDE_SCAN [[gnu::aligned(kEntryAlign)]] void strCopy(
    unsigned char* dst, std::uint32_t size, const unsigned char* src) {
  const std::uint32_t room = size - 1;
  if (distance(src, dst) < room || distance(dst, src) < room) {
    boundedCopy(dst, size, src);  // overlap: the block loop would read what it wrote
    return;
  }
  dst[room] = 0;
  if (room == 0) return;  // the text may end at an unreadable page
  const std::size_t misalign = reinterpret_cast<std::uintptr_t>(src) % kLane;
  const unsigned char* block =
      reinterpret_cast<const unsigned char*>(reinterpret_cast<std::uintptr_t>(src) - misalign);
  // A text that ends within the first blocks is measured, then moved whole.
  std::uint32_t bits = nulBits(block) >> misalign;
  std::size_t base = 0;                 // the text offset of bit 0 of `bits`
  std::size_t seen = kLane - misalign;  // text bytes looked at
  while (bits == 0 && seen < room && seen < kInlineMove - kLane) {
    block += kLane;
    base = seen;
    seen += kLane;
    bits = nulBits(block);
  }
  std::size_t last = 0;  // where the last piece starts
  if (bits == 0 && seen < room) {
    // A longer one: what is known to hold no NUL is stored, then each block
    // as soon as it is known to hold none and to lie within the room.
    move(dst, src, seen);
    // Four blocks at a time, with one test for all four, starting on 128
    // bytes so that the four never span two pages.
    bool more = true;
    while (more && (reinterpret_cast<std::uintptr_t>(block) + kLane) % kRun != 0) {
      more = wholeBlock(dst, block, bits, seen, room);
    }
    while (more && seen + kRun < room) {  // leaves the step below a byte to read
      const __m256i a = loadAligned(block + kLane);
      const __m256i b = loadAligned(block + 2 * kLane);
      const __m256i c = loadAligned(block + 3 * kLane);
      const __m256i d = loadAligned(block + 4 * kLane);
      if (nulBits(_mm256_min_epu8(_mm256_min_epu8(a, b), _mm256_min_epu8(c, d))) != 0) break;
      store(dst + seen, a);
      store(dst + seen + kLane, b);
      store(dst + seen + 2 * kLane, c);
      store(dst + seen + 3 * kLane, d);
      seen += kRun;
      block += kRun;
    }
    while (more) more = wholeBlock(dst, block, bits, seen, room);
    last = base = seen;
  }
  // The last piece: up to its block's NUL or the end of the room.
  std::size_t n = room - last;
  if (bits != 0) n = std::min<std::size_t>(n, base - last + __builtin_ctz(bits) + 1);
  move(dst + last, src + last, n);
}

}  // namespace zu::bytes::wide

#endif
