// strLike beside SQLite's own matchers on random ASCII texts and patterns:
// folded against sqlite3_strlike (with and without an escape), exact against
// sqlite3_strglob. Where the two differ by design the inputs stay clear of
// it: SQLite folds ASCII only and reads UTF-8, so every byte is below 0x80;
// strLike drops trailing blanks, so nothing ends in one; GLOB has sets and
// no escape, so its patterns hold no '[' and strLike gets no escape byte.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "strings/like.h"

#ifdef ZU_TEST_SQLITE3
#include <sqlite3.h>

namespace {

std::string draw(std::mt19937& random, const std::string& alphabet, size_t most) {
  std::string s(random() % (most + 1), ' ');
  for (char& c : s) c = alphabet[random() % alphabet.size()];
  if (!s.empty() && s.back() == ' ') s.back() = 'x';
  return s;
}

unsigned like(const std::string& text, const std::string& pattern, unsigned char anyMany,
              unsigned char anyOne, unsigned char escape, std::uint32_t exactCase) {
  // Exact-size copies, so that a sanitizer sees any read past either.
  const std::vector<unsigned char> t(text.begin(), text.end()), p(pattern.begin(), pattern.end());
  return strLike(t.data(), t.size(), p.data(), p.size(), anyMany, anyOne, escape, exactCase);
}

// Long texts now and then, so that scans run over whole blocks.
size_t textLength(int round) { return round % 8 == 0 ? 70 : 14; }

TEST(StrLikeSqlite, FoldedAgreesWithSqliteLike) {
  std::mt19937 random(20261124);
  const std::string textBytes = "abcABC x%_\\";
  const std::string patternBytes = "abcAB %%__\\\\";
  for (int i = 0; i < 40000; ++i) {
    const std::string text = draw(random, textBytes, textLength(i));
    const std::string pattern = draw(random, patternBytes, 9);
    const unsigned char escape = i % 4 == 0 ? 0 : '\\';
    const unsigned mine = like(text, pattern, '%', '_', escape, 0);
    const unsigned theirs = sqlite3_strlike(pattern.c_str(), text.c_str(), escape) == 0 ? 1 : 0;
    ASSERT_EQ(mine, theirs) << "text [" << text << "] pattern [" << pattern << "] escape "
                            << int(escape);
  }
}

TEST(StrLikeSqlite, ExactAgreesWithSqliteGlob) {
  std::mt19937 random(20261125);
  const std::string textBytes = "abcAB x*?[]";
  const std::string patternBytes = "abcAB **??";
  for (int i = 0; i < 40000; ++i) {
    const std::string text = draw(random, textBytes, textLength(i));
    const std::string pattern = draw(random, patternBytes, 9);
    const unsigned mine = like(text, pattern, '*', '?', 0, 1);
    const unsigned theirs = sqlite3_strglob(pattern.c_str(), text.c_str()) == 0 ? 1 : 0;
    ASSERT_EQ(mine, theirs) << "text [" << text << "] pattern [" << pattern << "]";
  }
}

}  // namespace

#else

TEST(StrLikeSqlite, NeedsSqlite) { GTEST_SKIP() << "SQLite was not found when the build was configured"; }

#endif
