// Wildcard matching without recursion or allocation, for SQL LIKE and DOS
// file patterns alike: two cursors and one restart point, the last anyMany
// seen. A mismatch after it retries its segment one text byte further on;
// earlier anyMany bytes are never tried again, which is enough because every
// other pattern item has a fixed width.
//
// Retrying one byte at a time would compare the segment's first literal at
// every position; the text is instead scanned for that literal in blocks.
#include "platform/wildcard.h"

#include <array>
#include <cstring>

#include "platform/charset.h"

namespace zu::platform {
namespace {

// The other byte that folds to the same letter, or the byte itself. Folding
// pairs bytes at most two to a letter, which the scan below relies on.
constexpr std::array<unsigned char, 256> makeFoldPartner() {
  std::array<unsigned char, 256> partner{};
  for (int c = 0; c < 256; ++c) partner[c] = static_cast<unsigned char>(c);
  for (int c = 0; c < 256; ++c) {
    if (kUpperCase[c] != c) {
      partner[c] = kUpperCase[c];
      partner[kUpperCase[c]] = static_cast<unsigned char>(c);
    }
  }
  return partner;
}

constexpr bool foldsInPairs() {
  std::array<int, 256> sharing{};
  for (int c = 0; c < 256; ++c) {
    if (kUpperCase[kUpperCase[c]] != kUpperCase[c]) return false;  // capitals are fixed
    if (++sharing[kUpperCase[c]] > 2) return false;
  }
  return true;
}
static_assert(foldsInPairs());

constexpr std::array<unsigned char, 256> kFoldPartner = makeFoldPartner();

// Word-at-a-time search for either of two bytes; words are loaded by memcpy,
// so nothing is read outside [from, end).
constexpr std::uint64_t kLowBits = 0x0101010101010101ull;
constexpr std::uint64_t kHighBits = 0x8080808080808080ull;
constexpr std::size_t kWord = sizeof(std::uint64_t);

bool hasZeroByte(std::uint64_t word) { return ((word - kLowBits) & ~word & kHighBits) != 0; }

const unsigned char* findEither(const unsigned char* from, const unsigned char* end,
                                unsigned char first, unsigned char second) {
  const std::uint64_t spreadFirst = kLowBits * first;
  const std::uint64_t spreadSecond = kLowBits * second;
  while (static_cast<std::size_t>(end - from) >= kWord) {
    std::uint64_t word;
    std::memcpy(&word, from, kWord);
    if (hasZeroByte(word ^ spreadFirst) || hasZeroByte(word ^ spreadSecond)) break;
    from += kWord;
  }
  while (from < end && *from != first && *from != second) ++from;
  return from;
}

struct Matcher {
  const unsigned char* text;
  std::uint32_t textLength;
  const unsigned char* pattern;
  std::uint32_t patternLength;
  unsigned char anyMany;
  unsigned char anyOne;
  unsigned char escape;
  bool exact;

  bool same(unsigned char p, unsigned char t) const {
    return p == t || (!exact && kUpperCase[p] == kUpperCase[t]);
  }

  // First text position from `from` whose byte matches `literal`, or the end.
  std::uint32_t seek(std::uint32_t from, unsigned char literal) const {
    const unsigned char* start = text + from;
    const unsigned char* end = text + textLength;
    const unsigned char partner = exact ? literal : kFoldPartner[literal];
    const unsigned char* hit;
    if (partner == literal) {
      hit = static_cast<const unsigned char*>(std::memchr(start, literal, end - start));
      if (hit == nullptr) hit = end;
    } else {
      hit = findEither(start, end, literal, partner);
    }
    return static_cast<std::uint32_t>(hit - text);
  }

  unsigned int run() const;
};

unsigned int Matcher::run() const {
  std::uint32_t t = 0;
  std::uint32_t p = 0;
  bool restartSet = false;
  std::uint32_t restartText = 0;
  std::uint32_t restartPattern = 0;
  unsigned char restartLiteral = 0;  // what the text byte at a restart must match

  for (;;) {
    if (t == textLength) {
      while (p < patternLength && pattern[p] == anyMany) ++p;
      return p == patternLength ? 1 : 0;
    }
    if (p < patternLength) {
      unsigned char c = pattern[p];
      if (c == anyMany) {
        while (p < patternLength && pattern[p] == anyMany) ++p;
        while (p < patternLength && pattern[p] == anyOne && t < textLength) {
          ++p;
          ++t;
        }
        if (p == patternLength) return 1;
        if (pattern[p] == anyMany) continue;
        // With the text used up, the pattern's rest (not an anyMany) fails.
        if (t == textLength) return 0;
        // Not anyOne, since text remains: a literal, or an escape before one.
        std::uint32_t literalAt = p;
        if (pattern[p] == escape && ++literalAt == patternLength) return 0;
        restartSet = true;
        restartText = t;
        restartPattern = p;
        restartLiteral = pattern[literalAt];
        goto retry;
      }
      if (c == anyOne) {
        ++p;
        ++t;
        continue;
      }
      if (c == escape) {
        if (++p == patternLength) goto mismatch;
        c = pattern[p];
      }
      if (same(c, text[t])) {
        ++p;
        ++t;
        continue;
      }
    }
  mismatch:
    if (!restartSet) return 0;
    ++restartText;
  retry:
    // Every position before the literal's next occurrence would fail on
    // the segment's first byte; at the end of the text the rest fails too.
    restartText = seek(restartText, restartLiteral);
    if (restartText == textLength) return 0;
    t = restartText;
    p = restartPattern;
  }
}

}  // namespace

bool wildcardMatch(const unsigned char* text, std::uint32_t textLength, const unsigned char* pattern,
                   std::uint32_t patternLength, const Wildcards& wildcards) {
  const Matcher matcher{text,    textLength,          pattern,          patternLength,
                        wildcards.anyMany, wildcards.anyOne, wildcards.escape, wildcards.exactCase};
  return matcher.run() != 0;
}

}  // namespace zu::platform
