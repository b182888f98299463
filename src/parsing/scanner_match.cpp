// Matching phrases of words against the tokens at hand.
#include "parsing/scanner.h"
#include "strings/compare.h"
#include "strings/text_rules.h"

using zu::bytes::kBlank;

namespace {

unsigned int matchPhrase(ZuScanner& scanner, ZuToken& token, const unsigned char* words,
                         bool foldCase) {
  if (words == nullptr) return 0;
  std::uint32_t& position = scanner.position;
  const std::uint32_t noted = position;
  ZuToken next;
  const ZuToken* current = &token;
  for (const unsigned char* word = words;;) {
    const unsigned char* stop = word;
    while (*stop != 0 && *stop != kBlank) ++stop;
    const auto wordLength = static_cast<std::uint32_t>(stop - word);
    const short order = foldCase ? strCompareCi(current->bytes, current->length, word, wordLength)
                                 : strCompare(current->bytes, current->length, word, wordLength);
    if (order != 0) {
      position = noted;
      return 0;
    }
    if (*stop == 0) {
      // Over the whole phrase, with the white space between its words.
      token.length += position - noted;
      return 1;
    }
    word = stop + 1;
    scanner.getToken(next, ZU_SEARCH_NORMAL);
    current = &next;
  }
}

unsigned int matchAnyPhrase(ZuScanner& scanner, ZuToken& token, const unsigned char* set,
                            bool foldCase) {
  if (set == nullptr) return 0;
  for (const unsigned char* phrase = set; *phrase != 0;) {
    if (matchPhrase(scanner, token, phrase, foldCase) != 0) return 1;
    while (*phrase != 0) ++phrase;
    ++phrase;
  }
  return 0;
}

unsigned int findPhrase(ZuScanner& scanner, const unsigned char* words, bool foldCase) {
  ZuToken token;
  for (;;) {
    scanner.getToken(token, ZU_SEARCH_NORMAL);
    if (token.type == ZU_TOKEN_END) return 0;
    if (matchPhrase(scanner, token, words, foldCase) != 0) return 1;
  }
}

}  // namespace

unsigned int ZuScanner::isEqual(ZuToken& token, const unsigned char* words) {
  return matchPhrase(*this, token, words, false);
}
unsigned int ZuScanner::isEqualCi(ZuToken& token, const unsigned char* words) {
  return matchPhrase(*this, token, words, true);
}
unsigned int ZuScanner::isInSet(ZuToken& token, const unsigned char* set) {
  return matchAnyPhrase(*this, token, set, false);
}
unsigned int ZuScanner::isInSetCi(ZuToken& token, const unsigned char* set) {
  return matchAnyPhrase(*this, token, set, true);
}
unsigned int ZuScanner::isTokenWithin(const unsigned char* words) {
  return findPhrase(*this, words, false);
}
unsigned int ZuScanner::isTokenWithinCi(const unsigned char* words) {
  return findPhrase(*this, words, true);
}
