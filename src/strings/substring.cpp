// Reading operations on views: searches, counts, the dictionary hash and
// the quoted-text helpers.
#include <cstring>

#include "strings/bytes.h"
#include "strings/compare.h"
#include "strings/string.h"
#include "strings/substring.h"
#include "strings/text_rules.h"

namespace {

// Bytes the hash looks at, and the distance from a to A.
constexpr std::uint32_t kHashedBytes = 5;
constexpr unsigned char kCaseShift = 'a' - 'A';
// Only a value that fits a byte can equal one.
constexpr unsigned short kLargestByte = 0xFF;
constexpr unsigned char kSingleQuote = '\'';

}  // namespace

ZuSubString::ZuSubString(const unsigned char* text)
    : length(text != nullptr ? BUTSTLEN(text) : 0), bytes(const_cast<unsigned char*>(text)) {}

ZuSubString::~ZuSubString() = default;

short ZuSubString::compare(const ZuObject* other) const {
  const auto* view = static_cast<const ZuSubString*>(other);
  return strCompareCi(bytes, length, view->bytes, view->length);
}

std::uint32_t ZuSubString::findChar(unsigned short ch, std::uint32_t start) const {
  if (bytes == nullptr || start >= length || ch > kLargestByte) return length;
  const void* hit = std::memchr(bytes + start, ch, length - start);
  return hit != nullptr ? static_cast<std::uint32_t>(static_cast<const unsigned char*>(hit) - bytes)
                        : length;
}

std::uint32_t ZuSubString::findSubString(const unsigned char* pattern, std::uint32_t start) const {
  const std::uint32_t patternLength = BUTSTLEN(pattern);
  if (bytes == nullptr || patternLength == 0 || start > length ||
      patternLength > length - start) {
    return length;
  }
  const std::uint32_t last = length - patternLength;
  for (std::uint32_t at = start; at <= last; ++at) {
    if (bytes[at] == pattern[0] && std::memcmp(bytes + at + 1, pattern + 1, patternLength - 1) == 0) {
      return at;
    }
  }
  return length;
}

std::uint32_t ZuSubString::countChar(unsigned short ch) const {
  std::uint16_t count = 0;
  if (bytes == nullptr || ch > kLargestByte) return count;
  for (std::uint32_t i = 0; i < length; ++i) {
    if (bytes[i] == ch) ++count;
  }
  return count;
}

std::uint32_t ZuSubString::hash() const {
  std::uint32_t sum = 0;
  const std::uint32_t count = length < kHashedBytes ? length : kHashedBytes;
  for (std::uint32_t i = 0; i < count; ++i) {
    const unsigned char c = bytes[i];
    sum += (c >= 'a' && c <= 'z') ? static_cast<unsigned char>(c - kCaseShift) : c;
  }
  return sum;
}

unsigned short ZuSubString::indexInSet(const unsigned char** set, unsigned short count) const {
  for (unsigned short i = 0; i < count; ++i) {
    if (strCompare(bytes, length, set[i], BUTSTLEN(set[i])) == 0) return i;
  }
  return count;
}

unsigned short ZuSubString::indexInSetCi(const unsigned char** set, unsigned short count) const {
  for (unsigned short i = 0; i < count; ++i) {
    if (strCompareCi(bytes, length, set[i], BUTSTLEN(set[i])) == 0) return i;
  }
  return count;
}

void ZuSubString::rightBlankTrim() {
  while (length != 0 && zu::bytes::isWhiteSpace(bytes[length - 1])) --length;
}

ZuStatus ZuSubString::copyQuotedStr(ZuString* target) const {
  if (target->ensureRoom(length) != ZU_OK) return ZU_ERROR;
  if (length == 0) return ZU_OK;
  const unsigned char quote = bytes[0];
  // A view without its closing quote copies to its end rather than past it.
  for (std::uint32_t at = 1; at < length; ++at) {
    if (bytes[at] == quote && ++at == length) break;
    if (target->concat(bytes[at]) != ZU_OK) return ZU_ERROR;
  }
  return ZU_OK;
}

unsigned char* ZuSubString::getCopyUnquoted(unsigned char* dst) const {
  strCopyUnquoted(dst, bytes, length);
  return dst;
}

unsigned char* ZuSubString::getCopyQuoted(unsigned char* dst, unsigned short quote) const {
  // The quote written is always '; `quote` takes no part.
  strCopyQuoted(dst, bytes, length, kSingleQuote);
  return dst;
}
