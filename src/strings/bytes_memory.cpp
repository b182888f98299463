// Byte ranges: copies, comparison, exchange and fill.
#include <cstring>

#include "strings/bytes.h"
#include "strings/directed_copy.h"
#include "strings/mem_words.h"
#include "strings/text_rules.h"
#include "strings/wide_copy.h"

namespace {

void butMemcp(unsigned char* dst, const unsigned char* src, unsigned short count) {
  zu::bytes::copyAscending(dst, src, count);
}

void butMmcpd(unsigned char* dst, const unsigned char* src, unsigned short count) {
  zu::bytes::copyDescending(dst, src, count);
}

void memCopy(void* dst, const void* src, std::uint32_t count) {
  zu::bytes::copyAscending(static_cast<unsigned char*>(dst), static_cast<const unsigned char*>(src),
                           count);
}

}  // namespace

#if ZU_WIDE_COPIES
ZU_CHOOSE_AT_LOAD(void(unsigned char*, const unsigned char*, unsigned short), zuChooseButMemcp,
                  BUTMEMCP, butMemcp, zu::bytes::wide::butMemcp)
ZU_CHOOSE_AT_LOAD(void(unsigned char*, const unsigned char*, unsigned short), zuChooseButMmcpd,
                  BUTMMCPD, butMmcpd, zu::bytes::wide::butMmcpd)
ZU_CHOOSE_AT_LOAD(void(void*, const void*, std::uint32_t), zuChooseMemCopyHuge, memCopyHuge,
                  memCopy, zu::bytes::wide::memCopyHuge)
#else
void BUTMEMCP(unsigned char* dst, const unsigned char* src, unsigned short count) {
  butMemcp(dst, src, count);
}

void BUTMMCPD(unsigned char* dst, const unsigned char* src, unsigned short count) {
  butMmcpd(dst, src, count);
}

void memCopyHuge(void* dst, const void* src, std::uint32_t count) { memCopy(dst, src, count); }
#endif

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

void memFillHuge(void* dst, unsigned char value, std::uint32_t count) {
  if (count != 0) zu::memFill(dst, value, count);
}
