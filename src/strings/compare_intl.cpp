// Locale collation of texts, through the platform.
#include <cstring>

#include "platform/collation.h"
#include "strings/compare.h"
#include "strings/text_rules.h"

namespace {

// Each operand is collated as a NUL-terminated copy in a buffer of this size.
constexpr std::uint32_t kIntlBuffer = 512;
constexpr std::uint32_t kIntlTextMax = kIntlBuffer - 1;
static_assert(kIntlTextMax <= zu::platform::kCollateMaxLength);

// A copy into a C text ends at the first NUL.
std::uint32_t untilNul(const unsigned char* text, std::uint32_t length) {
  const void* nul = std::memchr(text, 0, length);
  return nul != nullptr ? static_cast<std::uint32_t>(static_cast<const unsigned char*>(nul) - text)
                        : length;
}

std::uint32_t cut(std::uint32_t length) { return length < kIntlTextMax ? length : kIntlTextMax; }

// Longer operands are collated over what the buffers hold; a tie there is
// broken by byte order, so that different texts never collate as equal
// merely because they are long.
short collateTexts(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                   std::uint32_t lengthB) {
  const int order = zu::platform::collate(a, cut(lengthA), b, cut(lengthB));
  if (order == 0 && (lengthA > kIntlTextMax || lengthB > kIntlTextMax)) {
    return strCompare(a, lengthA, b, lengthB);
  }
  return zu::bytes::threeWay(order);
}

}  // namespace

short strCompareIntl(const unsigned char* a, const unsigned char* b) {
  return collateTexts(a, static_cast<std::uint32_t>(std::strlen(reinterpret_cast<const char*>(a))),
                      b, static_cast<std::uint32_t>(std::strlen(reinterpret_cast<const char*>(b))));
}

short strCompareIntl(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                     std::uint32_t lengthB) {
  return collateTexts(a, untilNul(a, lengthA), b, untilNul(b, lengthB));
}
