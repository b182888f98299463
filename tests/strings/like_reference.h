// An independent LIKE: the textbook recursion over pattern and text, with
// folding written from the character set's rules rather than its table.
#ifndef ZUUTL_TESTS_STRINGS_LIKE_REFERENCE_H
#define ZUUTL_TESTS_STRINGS_LIKE_REFERENCE_H

#include <string>
#include <vector>

namespace zutest {

inline unsigned char foldByRule(unsigned char c) {
  if (c >= 'a' && c <= 'z') return c - 32;
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return c - 32;  // accented letters
  if (c == 0x9A || c == 0x9C || c == 0x9E) return c - 16;  // s and z caron, oe
  if (c == 0xFF) return 0x9F;                              // y diaeresis
  return c;
}

struct LikeReference {
  std::string text, pattern;
  unsigned char anyMany = '%', anyOne = '_', escape = '\\';
  bool exact = true;
  std::vector<signed char> memo;

  bool run() {
    while (!text.empty() && text.back() == ' ') text.pop_back();
    while (!pattern.empty() && pattern.back() == ' ') pattern.pop_back();
    memo.assign((text.size() + 1) * (pattern.size() + 1), -1);
    return at(0, 0);
  }

  bool at(size_t t, size_t p) {
    signed char& known = memo[t * (pattern.size() + 1) + p];
    if (known < 0) known = step(t, p);
    return known != 0;
  }

  bool step(size_t t, size_t p) {
    if (p == pattern.size()) return t == text.size();
    const unsigned char c = pattern[p];
    if (c == anyMany) return at(t, p + 1) || (t < text.size() && at(t + 1, p));
    if (t == text.size()) return false;
    if (c == anyOne) return at(t + 1, p + 1);
    size_t width = 1;
    unsigned char literal = c;
    if (c == escape) {
      if (p + 1 == pattern.size()) return false;
      literal = pattern[p + 1];
      width = 2;
    }
    const unsigned char b = text[t];
    const bool same = b == literal || (!exact && foldByRule(b) == foldByRule(literal));
    return same && at(t + 1, p + width);
  }
};

}  // namespace zutest

#endif
