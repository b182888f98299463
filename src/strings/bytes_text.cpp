// NUL-terminated texts: copies, measures, comparison and searches.
#include <cstring>

#include "strings/bytes.h"
#include "strings/order.h"

namespace {

const char* chars(const unsigned char* text) { return reinterpret_cast<const char*>(text); }

unsigned char* bytesOf(const char* text) {
  return reinterpret_cast<unsigned char*>(const_cast<char*>(text));
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

unsigned char* BUTSTCPY(unsigned char* dst, const unsigned char* src) {
  const std::size_t length = std::strlen(chars(src));
  std::memmove(dst, src, length + 1);
  return dst + length;
}

unsigned short BUTSTLEN(const unsigned char* text) {
  return static_cast<unsigned short>(std::strlen(chars(text)));
}

void strCopy(unsigned char* dst, std::uint32_t size, const unsigned char* src) {
  const std::uint32_t room = size - 1;
  dst[room] = 0;
  // memchr stops at the first NUL, so a short source is never read past.
  const void* nul = std::memchr(src, 0, room);
  const std::size_t copied =
      nul != nullptr ? static_cast<const unsigned char*>(nul) - src + 1 : room;
  std::memmove(dst, src, copied);
}

unsigned char* strCopy(unsigned char* dst, const unsigned char* src, std::uint32_t count) {
  std::memmove(dst, src, count);
  dst[count] = 0;
  return dst + count;
}

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
