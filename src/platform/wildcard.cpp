// Wildcard matching without recursion or allocation, for SQL LIKE and DOS
// file patterns alike: two cursors and one restart point, the last anyMany
// seen. A mismatch after it retries its segment one text byte further on;
// earlier anyMany bytes are never tried again, which is enough because every
// other pattern item has a fixed width.
//
// Retrying one byte at a time would compare the segment's first literals at
// every position; the text is instead scanned for them sixteen bytes at a time.
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

// The literal bytes that open a segment after anyMany, each with the other
// byte that folds to it (or itself), as a scan looks for them.
constexpr std::uint32_t kMostLeading = 3;
struct Leading {
  unsigned char byte[kMostLeading];
  unsigned char partner[kMostLeading];
  std::uint32_t count;  // 1 to kMostLeading
};

// The first position from `from` at which the leading bytes stand in a row,
// or `length` when none does before the end. Sixteen positions at a step,
// through the compiler's generic vectors; loads by memcpy read nothing
// outside [from, length).
std::uint32_t findLeading(const unsigned char* text, std::uint32_t length, std::uint32_t from,
                          const Leading& leading) {
  typedef unsigned char Bytes __attribute__((vector_size(16)));
  constexpr std::uint32_t kStep = sizeof(Bytes);
  if (length - from < leading.count) return length;
  const std::uint32_t last = length - leading.count;  // the last position that can hold them
  std::uint32_t at = from;
  for (; at + kStep <= last + 1; at += kStep) {
    Bytes hit;
    std::memset(&hit, 0xFF, sizeof hit);
    for (std::uint32_t j = 0; j < leading.count; ++j) {
      Bytes v;
      std::memcpy(&v, text + at + j, sizeof v);
      hit &= reinterpret_cast<Bytes>((v == leading.byte[j]) | (v == leading.partner[j]));
    }
    std::uint64_t halves[2];
    std::memcpy(halves, &hit, sizeof halves);
    if ((halves[0] | halves[1]) != 0) break;
  }
  for (; at <= last; ++at) {
    std::uint32_t j = 0;
    while (j < leading.count &&
           (text[at + j] == leading.byte[j] || text[at + j] == leading.partner[j])) {
      ++j;
    }
    if (j == leading.count) return at;
  }
  return length;
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

  // The literal at `at` (after its escape, if any) and up to two plain
  // literals after it.
  Leading leadingAt(std::uint32_t at) const {
    Leading leading{};
    for (;;) {
      const unsigned char c = pattern[at];
      leading.byte[leading.count] = c;
      leading.partner[leading.count] = exact ? c : kFoldPartner[c];
      ++leading.count;
      if (leading.count == kMostLeading || ++at == patternLength) break;
      const unsigned char next = pattern[at];
      if (next == anyMany || next == anyOne || next == escape) break;
    }
    return leading;
  }

  unsigned int run() const;
};

unsigned int Matcher::run() const {
  std::uint32_t t = 0;
  std::uint32_t p = 0;
  bool restartSet = false;
  std::uint32_t restartText = 0;
  std::uint32_t restartPattern = 0;
  Leading restartLeading{};  // what the text at a restart must begin with

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
        restartLeading = leadingAt(literalAt);
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
    // Every position before the next occurrence of the segment's leading
    // literals would fail on one of them; at the end the rest fails too.
    restartText = findLeading(text, textLength, restartText, restartLeading);
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
