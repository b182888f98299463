#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "strings/like.h"
#include "like_reference.h"

namespace {

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

// Short texts over an alphabet dense in wildcards, escapes, blanks and the
// letters whose folding is irregular (accents, carons, y diaeresis, the
// caseless signs), so every edge of matching, escaping at the end, trailing
// blanks and folding turns up many times.
TEST(StrLike, AgreesWithARecursiveMatcher) {
  std::mt19937 random(20240611);
  const std::string alphabet =
      std::string("abAB \xE9\xC9\xFF\x9F\x8A\x9A\xD7\xF7%_\\*?", 18) + std::string(1, '\0');
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
