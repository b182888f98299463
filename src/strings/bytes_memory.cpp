// Byte ranges: copies, comparison, exchange and fill.
#include <cstring>

#include "strings/bytes.h"
#include "strings/directed_copy.h"
#include "strings/mem_words.h"
#include "strings/text_rules.h"

void BUTMEMCP(unsigned char* dst, const unsigned char* src, unsigned short count) {
  zu::bytes::copyAscending(dst, src, count);
}

void BUTMMCPD(unsigned char* dst, const unsigned char* src, unsigned short count) {
  zu::bytes::copyDescending(dst, src, count);
}

short BUTMMCMP(const unsigned char* a, const unsigned char* b, unsigned short count) {
  return zu::memOrder(static_cast<const unsigned char*>(a), static_cast<const unsigned char*>(b), count);
}

void BUTMMSWP(unsigned char* a, unsigned char* b, unsigned short count) { zu::memSwap(a, b, count); }

void BUTU8FIL(unsigned char* dst, unsigned char value, unsigned short count) {
  if (count != 0) zu::memFill(dst, value, count);
}

short memCompareHuge(const void* a, const void* b, std::uint32_t count) {
  return zu::memOrder(static_cast<const unsigned char*>(a), static_cast<const unsigned char*>(b), count);
}

void memCopyHuge(void* dst, const void* src, std::uint32_t count) {
  zu::bytes::copyAscending(static_cast<unsigned char*>(dst), static_cast<const unsigned char*>(src),
                           count);
}

void memFillHuge(void* dst, unsigned char value, std::uint32_t count) {
  if (count != 0) zu::memFill(dst, value, count);
}
