#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "platform/collation.h"
#include "strings/compare.h"
#include "like_reference.h"

namespace {

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

TEST(TextCompare, ExactAndFolded) {
  EXPECT_EQ(strCompare(u("abc"), 3, u("abd"), 3), -1);
  EXPECT_EQ(strCompare(u("abc"), 3, u("ab"), 2), 1);
  EXPECT_EQ(strCompare(nullptr, 0, nullptr, 0), 0);
  EXPECT_EQ(strCompare(u("a\0b"), 3, u("a\0c"), 3), -1);  // NUL is a byte like others
  EXPECT_EQ(strCompare(u("a"), 1, u("B"), 1), 1);
  EXPECT_EQ(strCompareCi(u("a"), 1, u("B"), 1), -1);
  EXPECT_EQ(strCompareCi(u("ABC"), u("abc")), 0);
  EXPECT_EQ(strCompareCi(u("Ab"), u("abc")), -1);
  EXPECT_EQ(strCompareCi(u("\xC9T\xC9"), 3, u("\xE9t\xE9"), 3), 0);  // ETE with acutes
  EXPECT_EQ(strCompareCi(u("\xF7"), u("\xD7")), 1);  // division and multiplication signs

  // Exactly the case pairs of the character set fold together.
  for (int x = 0; x < 256; ++x) {
    for (int y = 0; y < 256; ++y) {
      const unsigned char a = x, b = y;
      const bool pair = zutest::foldByRule(a) == zutest::foldByRule(b);
      ASSERT_EQ(strCompareCi(&a, 1, &b, 1) == 0, pair) << x << " " << y;
    }
  }
}

TEST(TextCompare, PaddedAndBounded) {
  EXPECT_EQ(strComparePad(u("abc"), u("abc  ")), 0);
  EXPECT_EQ(strComparePad(u("abc  "), u("abc")), 0);
  EXPECT_EQ(strComparePad(u("abcd"), u("abc")), 1);
  EXPECT_EQ(strComparePad(u("abc"), u("abc\t")), -1);  // below a blank, still greater
  EXPECT_EQ(strComparePad(u("abc"), u("abd  ")), -1);
  EXPECT_EQ(strCompareWithMaxLength(u("abcd"), u("abcx"), 3), 0);
  EXPECT_EQ(strCompareWithMaxLength(u("abcd"), u("abcx"), 4), -1);
  EXPECT_EQ(strCompareWithMaxLength(u("b"), u("a"), 0), 0);
  EXPECT_EQ(strCompareWithMaxLength(u("ab\0x"), u("ab\0y"), 4), 0);
}

std::vector<unsigned char> stored(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  std::vector<unsigned char> bytes(8);
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
  return bytes;
}

TEST(TextCompare, StoredDoublesOrderAsNumbers) {
  const double inf = std::numeric_limits<double>::infinity();
  const double tiny = std::numeric_limits<double>::denorm_min();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // Ascending; -0.0 below +0.0, NaNs outside the infinities by their sign.
  const std::vector<double> ascending = {-nan, -inf, -1e300, -2.0, -1.0,  -tiny, -0.0,
                                         0.0,  tiny, 1.0,    2.0,  1e300, inf,   nan};
  for (size_t i = 0; i < ascending.size(); ++i) {
    for (size_t j = 0; j < ascending.size(); ++j) {
      const short want = (i > j) - (i < j);
      EXPECT_EQ(floatCompare(stored(ascending[i]).data(), stored(ascending[j]).data()), want)
          << ascending[i] << " vs " << ascending[j];
    }
  }
}

TEST(TextCompare, CollationByCodePointInTheCLocale) {
  ASSERT_TRUE(zu::platform::setCollationLocale("C"));
  EXPECT_FALSE(zu::platform::setCollationLocale("xx_NOWHERE.UTF-8"));
  EXPECT_LT(strCompareIntl(u("abc"), u("abd")), 0);
  EXPECT_EQ(strCompareIntl(u("abc"), u("abc")), 0);
  // e acute U+E9 < y diaeresis U+FF < S caron U+160 < euro U+20AC, whereas
  // the bytes run 0x80 (euro) < 0x8A < 0xE9 < 0xFF.
  EXPECT_LT(strCompareIntl(u("\xE9"), u("\xFF")), 0);
  EXPECT_LT(strCompareIntl(u("\xFF"), u("\x8A")), 0);
  EXPECT_LT(strCompareIntl(u("x\x8A"), 2, u("x\x80"), 2), 0);
  EXPECT_GT(strCompare(u("x\x8A"), 2, u("x\x80"), 2), 0);
  EXPECT_EQ(strCompareIntl(u("ab\0x"), 4, u("ab\0y"), 4), 0);  // copied as C texts

  // Beyond the collated 511 bytes, byte order breaks a tie.
  std::string longA(600, 'x'), longB = longA;
  EXPECT_EQ(strCompareIntl(u(longA.c_str()), u(longB.c_str())), 0);
  longB[560] = 'y';
  EXPECT_LT(strCompareIntl(u(longA.c_str()), u(longB.c_str())), 0);
  EXPECT_GT(strCompareIntl(u(longB.c_str()), 600, u(longA.c_str()), 511), 0);
  ASSERT_TRUE(zu::platform::setCollationLocale(""));
}

}  // namespace
