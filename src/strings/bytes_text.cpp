// NUL-terminated texts: copies, measures, comparison and searches.
#include <cstring>

#include "strings/bytes.h"
#include "strings/small_move.h"
#include "strings/text_rules.h"
#include "strings/wide_copy.h"

namespace {

const char* chars(const unsigned char* text) { return reinterpret_cast<const char*>(text); }

unsigned char* bytesOf(const char* text) {
  return reinterpret_cast<unsigned char*>(const_cast<char*>(text));
}

// Texts are copied a block at a time: the NUL is looked for in a block that
// is then still in the cache for the copy. memchr stops at the first NUL, so
// nothing past the text is read, and a destination below the source is safe.
constexpr std::size_t kTextBlock = 4096;

// Copies `src` through its NUL but at most `limit` bytes; returns the count.
std::size_t copyThroughNul(unsigned char* dst, const unsigned char* src, std::size_t limit) {
  std::size_t done = 0;
  while (done < limit) {
    const std::size_t block = limit - done < kTextBlock ? limit - done : kTextBlock;
    const void* nul = std::memchr(src + done, 0, block);
    const std::size_t n =
        nul != nullptr ? static_cast<const unsigned char*>(nul) - (src + done) + 1 : block;
    std::memmove(dst + done, src + done, n);
    done += n;
    if (nul != nullptr) break;
  }
  return done;
}

constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

// Apart, so that the copy above its source is a jump and nothing more.
[[gnu::noinline]] unsigned char* copyDownward(unsigned char* dst, const unsigned char* src) {
  return dst + copyThroughNul(dst, src, kUnlimited) - 1;
}

}  // namespace

unsigned char* BUTSTCAT(unsigned char* dst, const unsigned char* src) {
  return BUTSTCPY(dst + std::strlen(chars(dst)), src);
}

unsigned char* BUTSTCHR(const unsigned char* text, unsigned char ch) {
  if (ch == 0) return nullptr;
  return bytesOf(std::strchr(chars(text), ch));
}

short BUTSTCMP(const unsigned char* a, const unsigned char* b) {
  return zu::bytes::threeWay(std::strcmp(chars(a), chars(b)));
}

// Above its source, an overlapping destination would have made the byte
// loop this stands for overwrite the NUL before reaching it, so no caller
// has one there: the C library's copy serves.
unsigned char* BUTSTCPY(unsigned char* dst, const unsigned char* src) {
  if (dst > src) return bytesOf(stpcpy(reinterpret_cast<char*>(dst), chars(src)));
  return copyDownward(dst, src);
}

unsigned short BUTSTLEN(const unsigned char* text) {
  return static_cast<unsigned short>(std::strlen(chars(text)));
}

void zu::bytes::boundedCopy(unsigned char* dst, std::uint32_t size, const unsigned char* src) {
  const std::uint32_t room = size - 1;
  dst[room] = 0;
  if (room > kTextBlock) {
    copyThroughNul(dst, src, room);
    return;
  }
  // One block: measured, then moved, without the loop.
  const std::size_t n = strnlen(chars(src), room);
  zu::bytes::move(dst, src, n < room ? n + 1 : n);
}

unsigned char* zu::bytes::countedCopy(unsigned char* dst, const unsigned char* src,
                                      std::uint32_t count) {
  zu::bytes::move(dst, src, count);
  dst[count] = 0;
  return dst + count;
}

#if ZU_WIDE_SCAN_COPY
ZU_CHOOSE_AT_LOAD(void(unsigned char*, std::uint32_t, const unsigned char*), zuChooseBoundedCopy,
                  strCopy, zu::bytes::boundedCopy, zu::bytes::wide::strCopy)
#else
void strCopy(unsigned char* dst, std::uint32_t size, const unsigned char* src) {
  zu::bytes::boundedCopy(dst, size, src);
}
#endif

#if ZU_WIDE_COPIES
ZU_CHOOSE_AT_LOAD(unsigned char*(unsigned char*, const unsigned char*, std::uint32_t),
                  zuChooseCountedCopy, strCopy, zu::bytes::countedCopy, zu::bytes::wide::strCopy)
#else
unsigned char* strCopy(unsigned char* dst, const unsigned char* src, std::uint32_t count) {
  return zu::bytes::countedCopy(dst, src, count);
}
#endif

unsigned char* strFind(const unsigned char* text, const unsigned char* pattern) {
  return bytesOf(std::strstr(chars(text), chars(pattern)));
}

unsigned char* strFindReverse(const unsigned char* text, unsigned char ch) {
  if (ch == 0) return nullptr;
  return bytesOf(std::strrchr(chars(text), ch));
}

unsigned char* strFind(const unsigned char* text, unsigned char ch, unsigned char quote1,
                       unsigned char quote2, unsigned char quote3) {
  unsigned char open = 0;
  for (const unsigned char* p = text; *p != 0; ++p) {
    if (open != 0) {
      if (*p == open) open = 0;  // a doubled quote closes and reopens
      continue;
    }
    // Tested before the quotes, so a `ch` that is a quote byte is found.
    if (*p == ch) return const_cast<unsigned char*>(p);
    if (*p == quote1 || *p == quote2 || *p == quote3) open = *p;
  }
  return nullptr;
}
