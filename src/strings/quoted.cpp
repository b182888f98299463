// Quoted texts: a quote byte, the content with its quote bytes doubled, the
// quote byte again. Runs between quote bytes move as blocks.
#include <cstring>

#include "strings/bytes.h"

namespace {

// A quote byte inside the content is written twice; the result is one more
// byte than the quoted text, for the NUL.
constexpr unsigned kQuoteWidth = 2;
// Only a quote that fits in a byte can equal a byte of the content.
constexpr unsigned short kLargestByte = 0xFF;

const unsigned char* findByte(const unsigned char* from, unsigned char byte, std::size_t count) {
  return static_cast<const unsigned char*>(std::memchr(from, byte, count));
}

}  // namespace

unsigned char* strCopyQuoted(unsigned char* dst, const unsigned char* src, std::uint32_t count,
                             unsigned short quote) {
  const unsigned char mark = static_cast<unsigned char>(quote);
  const bool canDouble = quote <= kLargestByte;
  *dst++ = mark;
  const unsigned char* end = src + count;
  while (src < end) {
    const unsigned char* hit = canDouble ? findByte(src, mark, end - src) : nullptr;
    const std::size_t run = (hit != nullptr ? hit + 1 : end) - src;
    std::memcpy(dst, src, run);
    dst += run;
    src += run;
    if (hit != nullptr) *dst++ = mark;
  }
  *dst++ = mark;
  *dst = 0;
  return dst;
}

unsigned char* strCopyQuoted(unsigned char* dst, const unsigned char* src, unsigned short quote) {
  return strCopyQuoted(dst, src, BUTSTLEN(src), quote);
}

unsigned char* strCatQuoted(unsigned char* dst, const unsigned char* src, unsigned short quote) {
  return strCopyQuoted(dst + BUTSTLEN(dst), src, quote);
}

// The writer never overtakes the reader, so `dst` may be `src`. A text that
// is not well formed stops where the count would run out instead of past it:
// a count below 2 gives the empty text, a lone quote at the end is dropped.
unsigned char* strCopyUnquoted(unsigned char* dst, const unsigned char* src, std::uint32_t count) {
  if (count < kQuoteWidth) {
    *dst = 0;
    return dst;
  }
  const unsigned char mark = src[0];
  const unsigned char* read = src + 1;
  std::uint32_t left = count - kQuoteWidth;
  while (left != 0) {
    const unsigned char* hit = findByte(read, mark, left);
    const std::uint32_t run = hit != nullptr ? static_cast<std::uint32_t>(hit - read) : left;
    std::memmove(dst, read, run);
    dst += run;
    read += run;
    left -= run;
    if (left == 0) break;
    ++read;  // the first of a doubled quote
    if (--left == 0) break;
    *dst++ = *read++;
    --left;
  }
  *dst = 0;
  return dst;
}

unsigned char* strCopyUnquoted(unsigned char* dst, const unsigned char* src) {
  return strCopyUnquoted(dst, src, BUTSTLEN(src));
}
