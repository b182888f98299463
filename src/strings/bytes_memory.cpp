// Byte ranges: copies, comparison, exchange and fill.
#include <cstring>

#include "strings/bytes.h"
#include "strings/directed_copy.h"
#include "strings/mem_words.h"
#include "strings/text_rules.h"

namespace {

// The exchange goes through a stack buffer of this size, never the heap.
constexpr unsigned kSwapBlock = 512;

short compareBytes(const void* a, const void* b, std::uint32_t count) {
  return count == 0 ? 0 : zu::bytes::threeWay(std::memcmp(a, b, count));
}

}  // namespace

void BUTMEMCP(unsigned char* dst, const unsigned char* src, unsigned short count) {
  zu::bytes::copyAscending(dst, src, count);
}

void BUTMMCPD(unsigned char* dst, const unsigned char* src, unsigned short count) {
  zu::bytes::copyDescending(dst, src, count);
}

short BUTMMCMP(const unsigned char* a, const unsigned char* b, unsigned short count) {
  return compareBytes(a, b, count);
}

void BUTMMSWP(unsigned char* a, unsigned char* b, unsigned short count) {
  unsigned char buffer[kSwapBlock];
  while (count != 0) {
    const unsigned short block = count < kSwapBlock ? count : kSwapBlock;
    zu::memCopy(buffer, a, block);
    zu::memCopy(a, b, block);
    zu::memCopy(b, buffer, block);
    a += block;
    b += block;
    count = static_cast<unsigned short>(count - block);
  }
}

void BUTU8FIL(unsigned char* dst, unsigned char value, unsigned short count) {
  if (count != 0) zu::memFill(dst, value, count);
}

short memCompareHuge(const void* a, const void* b, std::uint32_t count) {
  return compareBytes(a, b, count);
}

void memCopyHuge(void* dst, const void* src, std::uint32_t count) {
  zu::bytes::copyAscending(static_cast<unsigned char*>(dst), static_cast<const unsigned char*>(src),
                           count);
}

void memFillHuge(void* dst, unsigned char value, std::uint32_t count) {
  if (count != 0) zu::memFill(dst, value, count);
}
