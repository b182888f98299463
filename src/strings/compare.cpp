// Exact, folding and blank-padded comparison, and the order of doubles.
#include <cstring>

#include "platform/charset.h"
#include "strings/bytes.h"
#include "strings/compare.h"
#include "strings/text_rules.h"

namespace {

using zu::bytes::kBlank;
using zu::bytes::threeWay;
using zu::platform::upperCase;

short compareLengths(std::uint32_t lengthA, std::uint32_t lengthB) {
  return static_cast<short>((lengthA > lengthB) - (lengthA < lengthB));
}

// Folds only where the bytes differ: identical bytes need no lookup.
short compareFolded(unsigned char a, unsigned char b) {
  if (a == b) return 0;
  return threeWay(upperCase(a) - upperCase(b));
}

bool allBlanks(const unsigned char* from, const unsigned char* end) {
  for (; from < end; ++from) {
    if (*from != kBlank) return false;
  }
  return true;
}

// A stored double: eight bytes, least significant first, sign in the top bit.
constexpr int kDoubleTopByte = 7;
constexpr unsigned char kSignBit = 0x80;

}  // namespace

short strCompare(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                 std::uint32_t lengthB) {
  const std::uint32_t common = lengthA < lengthB ? lengthA : lengthB;
  const int bytes = common != 0 ? std::memcmp(a, b, common) : 0;
  return bytes != 0 ? threeWay(bytes) : compareLengths(lengthA, lengthB);
}

short strCompareCi(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                   std::uint32_t lengthB) {
  const std::uint32_t common = lengthA < lengthB ? lengthA : lengthB;
  for (std::uint32_t i = 0; i < common; ++i) {
    if (short r = compareFolded(a[i], b[i]); r != 0) return r;
  }
  return compareLengths(lengthA, lengthB);
}

short strCompareCi(const unsigned char* a, const unsigned char* b) {
  for (;; ++a, ++b) {
    if (short r = compareFolded(*a, *b); r != 0) return r;
    if (*a == 0) return 0;
  }
}

short strCompareWithMaxLength(const unsigned char* a, const unsigned char* b,
                              std::uint32_t maxLength) {
  return threeWay(
      std::strncmp(reinterpret_cast<const char*>(a), reinterpret_cast<const char*>(b), maxLength));
}

short strComparePad(const unsigned char* a, const unsigned char* b) {
  const unsigned short lengthA = BUTSTLEN(a);
  const unsigned short lengthB = BUTSTLEN(b);
  const unsigned short common = lengthA < lengthB ? lengthA : lengthB;
  if (short r = BUTMMCMP(a, b, common); r != 0) return r;
  // The rest is tested for blanks, not compared with them: a tab there is
  // as much "greater" as a letter.
  if (lengthA > lengthB) return allBlanks(a + common, a + lengthA) ? 0 : 1;
  if (lengthB > lengthA) return allBlanks(b + common, b + lengthB) ? 0 : -1;
  return 0;
}

short floatCompare(const unsigned char* a, const unsigned char* b) {
  const bool negativeA = (a[kDoubleTopByte] & kSignBit) != 0;
  const bool negativeB = (b[kDoubleTopByte] & kSignBit) != 0;
  if (negativeA != negativeB) return negativeA ? -1 : 1;
  // Sign and magnitude: among negatives the larger bit pattern is the smaller value.
  for (int i = kDoubleTopByte; i >= 0; --i) {
    if (a[i] != b[i]) {
      const short larger = a[i] > b[i] ? 1 : -1;
      return negativeA ? static_cast<short>(-larger) : larger;
    }
  }
  return 0;
}
