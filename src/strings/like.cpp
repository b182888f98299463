// SQL LIKE: the platform's one wildcard matcher over the texts without
// their trailing blanks.
#include "platform/wildcard.h"
#include "strings/bytes.h"
#include "strings/like.h"
#include "strings/text_rules.h"

namespace {

using zu::bytes::kBlank;

std::uint32_t withoutTrailingBlanks(const unsigned char* text, std::uint32_t length) {
  while (length != 0 && text[length - 1] == kBlank) --length;
  return length;
}

}  // namespace

unsigned int strLike(const unsigned char* text, std::uint32_t textLength,
                     const unsigned char* pattern, std::uint32_t patternLength,
                     unsigned char anyMany, unsigned char anyOne, unsigned char escape,
                     std::uint32_t exactCase) {
  const zu::platform::Wildcards wildcards{anyMany, anyOne, escape, exactCase != 0};
  return zu::platform::wildcardMatch(text, withoutTrailingBlanks(text, textLength), pattern,
                                     withoutTrailingBlanks(pattern, patternLength), wildcards)
             ? 1
             : 0;
}

unsigned int strLike(const unsigned char* text, const unsigned char* pattern, unsigned char anyMany,
                     unsigned char anyOne, unsigned char escape, std::uint32_t exactCase) {
  return strLike(text, BUTSTLEN(text), pattern, BUTSTLEN(pattern), anyMany, anyOne, escape,
                 exactCase);
}
