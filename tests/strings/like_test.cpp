#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "strings/like.h"
#include "like_reference.h"

namespace {

unsigned like(const std::string& text, const std::string& pattern, bool exact = true,
              unsigned char escape = '\\') {
  return strLike(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                 reinterpret_cast<const unsigned char*>(pattern.data()), pattern.size(), '%', '_',
                 escape, exact ? 1 : 0);
}

TEST(StrLike, Cases) {
  struct Case {
    const char* text;
    const char* pattern;
    unsigned want;
  };
  const Case cases[] = {
      {"", "%", 1},          {"", "", 1},           {"a", "", 0},          {"abc", "a%", 1},
      {"abc", "%c", 1},      {"abc", "a_c", 1},     {"abc", "a_", 0},      {"abc", "abc%", 1},
      {"abcabd", "%abd", 1}, {"abcabd", "%abc", 0}, {"ab", "a_%", 1},      {"a", "a_%", 0},
      {"", "%%%", 1},        {"abc", "%%%", 1},     {"abc", "%_%_%_%", 1}, {"ab", "%_%_%_%", 0},
      {"100%", "100\\%", 1}, {"100x", "100\\%", 0}, {"abc", "abc\\", 0},   {"abc", "%\\", 0},
      {"", "\\", 0},         {"a_c", "a\\_c", 1},   {"abc", "a\\_c", 0},   {"a\\c", "a\\\\c", 1},
      {"abc   ", "abc", 1},  {"abc", "abc   ", 1},  {" abc", "abc", 0},    {"   ", "", 1},
      {"a b", "a%b", 1},     {"ab", "ab\\ ", 0},  // the escaped blank is trailing, so cut
      {"ABC", "abc", 0},     {"aXbXc", "%b_c", 1},  {"xaab", "%aab", 1},   {"aaab", "%a_b", 1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(like(c.text, c.pattern), c.want) << c.text << " LIKE " << c.pattern;
  }
  EXPECT_EQ(like("ABC", "abc", false), 1u);
  EXPECT_EQ(like("\xC9t\xC9", "%\xE9T\xE9", false), 1u);  // accented capitals fold
  EXPECT_EQ(like("\x9F\x8A", "\xFF\x9A", false), 1u);
  EXPECT_EQ(like("\xD7", "\xF7", false), 0u);
  // An escape that is a wildcard stays a wildcard.
  EXPECT_EQ(like("100x", "100%", true, '%'), 1u);
  EXPECT_EQ(like("1x", "1_", true, '_'), 1u);
}

TEST(StrLike, TerminatedTextsAreMeasuredInSixteenBits) {
  const auto u = [](const std::string& s) {
    return reinterpret_cast<const unsigned char*>(s.c_str());
  };
  const std::string full(65536, 'a'), oneMore(65537, 'a');
  EXPECT_EQ(strLike(u(full), u(""), '%', '_', '\\', 1), 1u);
  EXPECT_EQ(strLike(u(full), u("a%"), '%', '_', '\\', 1), 0u);
  EXPECT_EQ(strLike(u(oneMore), u("_"), '%', '_', '\\', 1), 1u);
  EXPECT_EQ(strLike(u(full), 65536, u("a%"), 2, '%', '_', '\\', 1), 1u);
  EXPECT_EQ(strLike(u("ab  "), u("%B"), '%', '_', '\\', 0), 1u);
}

TEST(StrLike, AgreesWithARecursiveMatcher) {
  std::mt19937 random(20240611);
  const std::string alphabet =
      std::string("abAB \xE9\xC9\xFF\x9F%_\\*?", 14) + std::string(1, '\0');
  const unsigned char wildcards[][3] = {{'%', '_', '\\'}, {'*', '?', '\\'}, {'%', '_', '%'},
                                        {'%', '_', 'a'},  {'%', '_', 0},    {'%', '%', '_'}};
  auto draw = [&](size_t most) {
    std::string s(random() % (most + 1), ' ');
    for (char& c : s) c = alphabet[random() % alphabet.size()];
    return s;
  };
  for (int i = 0; i < 30000; ++i) {
    zutest::LikeReference ref;
    const auto& w = wildcards[random() % std::size(wildcards)];
    ref.anyMany = w[0];
    ref.anyOne = w[1];
    ref.escape = w[2];
    ref.exact = random() % 2 == 0;
    ref.pattern = draw(8);
    ref.text = draw(i % 10 == 0 ? 40 : 12);
    const std::string text = ref.text, pattern = ref.pattern;
    // Exact-size copies, without the string's NUL, so a sanitizer sees any overread.
    const std::vector<unsigned char> t(text.begin(), text.end()), p(pattern.begin(), pattern.end());
    const unsigned got =
        strLike(t.data(), t.size(), p.data(), p.size(), w[0], w[1], w[2], ref.exact);
    ASSERT_EQ(got, ref.run() ? 1u : 0u)
        << "text [" << text << "] pattern [" << pattern << "] wildcards " << w[0] << w[1]
        << int(w[2]) << " exact " << ref.exact;
  }
}

}  // namespace
