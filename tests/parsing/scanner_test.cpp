// ZuScanner: every token kind and where it ends, the options, delimited
// fields, phrase matching, rewriting through the owner, and random texts
// whose tokens must tile the text without reading past it.
#include "parsing/scanner.h"

#include <gtest/gtest.h>

#include <cctype>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "support/error_fixture.h"
#include "support/oom_sweep.h"

namespace {

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
std::string text(const ZuSubString& view) {
  return view.length == 0 ? std::string()
                          : std::string(reinterpret_cast<char*>(view.bytes), view.length);
}

using Options = std::function<void(ZuScanner&)>;

// Every token up to the end, as "kind:bytes|...", the end token included.
std::string scan(const std::string& input, const Options& setup = {},
                 SearchType type = ZU_SEARCH_NORMAL) {
  ZuScanner s(u(input.data()), static_cast<std::uint32_t>(input.size()));
  if (setup) setup(s);
  std::string out;
  ZuToken t;
  do {
    s.getToken(t, type);
    EXPECT_EQ(t.bytes, s.scanBytes + t.offset);
    out += std::to_string(t.type) + ":" + text(t) + (t.type == ZU_TOKEN_END ? "" : "|");
  } while (t.type != ZU_TOKEN_END);
  return out;
}

constexpr std::uint32_t pair(char a, char b) {
  return static_cast<unsigned char>(a) * 256u + static_cast<unsigned char>(b);
}

// Every token up to the end for one text, option set and search mode.
TEST(ZuScanner, TokensOfEachKindUnderEachOption) {
  const Options noQuotes = [](ZuScanner& s) { s.quote1 = s.quote2 = s.quote3 = 0; };
  const Options parens = [](ZuScanner& s) { s.parenBlocks = 1; };
  const Options braces = [](ZuScanner& s) { s.braceBlocks = 1; };
  const Options brackets = [](ZuScanner& s) { s.blockOpen = '[', s.blockClose = ']'; };
  const Options comments = [](ZuScanner& s) { s.comments = 1; };
  const Options commas = [](ZuScanner& s) { s.delimiterChars.concat(u(",")); };
  const Options dash = [](ZuScanner& s) { s.wordPartChars.concat(u("-")); };
  const Options lineStart = [](ZuScanner& s) { s.wordStartChars.concat(u("\n")); };
  const SearchType bare = ZU_SEARCH_BARE, hash = ZU_SEARCH_HASH_NAME;
  struct Case {
    const char* input;
    const char* tokens;  // two-byte operators are typed 256 * first + second
    Options options = {};
    SearchType type = ZU_SEARCH_NORMAL;
  };
  const Case cases[] = {
      {"", "1:"},
      {" \t\r\n\v\f", "1:"},
      {"SELECT *", "2:SELECT|42:*|1:"},
      {"a<=b", "2:a|15421:<=|2:b|1:"},
      {"1.5", "9:1.5|1:"},
      {"1.5,", "5:1.5|44:,|1:"},
      {".5 . 1. x", "5:.5|46:.|5:1.|2:x|1:"},
      {"1e5 -5 1.2.3", "5:1|2:e5|45:-|5:5|5:1.2|9:.3|1:"},
      {"abc#", "2:abc|35:#|1:"},
      {"_x9 \xC8\xE9 \xD7 \xF7", "2:_x9|2:\xC8\xE9|10:\xD7|10:\xF7|1:"},
      {"[^~\x01\x80\xBF", "10:[|10:^|10:~|10:\x01|10:\x80|10:\xBF|1:"},
      {"--x", "11565:--|2:x|1:"},
      {"<>=!", "15422:<>|61:=|33:!|1:"},
      {"'\"`", "39:'|34:\"|96:`|1:", noQuotes},
      // A doubled quote at the end leaves the text open.
      {"'it''s' x", "3:'it''s'|2:x|1:"},
      {"'abc", "4:'abc|1:"},
      {"''", "3:''|1:"},
      {"'ab''", "4:'ab''|1:"},
      {"'''", "4:'''|1:"},
      {"\"a'b\"`c\"d`", "3:\"a'b\"|3:`c\"d`|1:"},
      {"'x'", "3:'x'|1:", {}, bare},
      {"(a,(b),')') x", "3:(a,(b),')')|2:x|1:", parens},
      {"(a,(b)", "4:(a,(b)|1:", parens},
      {"(a 'b)", "4:(a 'b)|1:", parens},
      {"{fn NOW()}", "123:{|2:fn|2:NOW|40:(|41:)|125:}|1:"},
      {"{fn NOW()}", "3:{fn NOW()}|1:", braces},
      {"[a[b]c]", "3:[a[b]c]|1:", brackets},
      {"[a", "4:[a|1:", brackets},
      {"a -- note\r\nb", "2:a|11:-- note\r|2:b|1:", comments},
      {"-- to the end", "11:-- to the end|1:", comments},
      {"/* a */b /*/ c", "11:/* a */|2:b|11:/*/ c|1:", comments},
      {"/**/-", "11:/**/|45:-|1:", comments},
      {"abc# #tmp$1 #", "7:abc#|7:#tmp$1|7:#|1:", {}, hash},
      {"C:\\dir\\f.txt,x", "6:C:\\dir\\f.txt|44:,|6:x|1:", {}, bare},
      {",a'b|c", "44:,|6:a'b|124:||6:c|1:", {}, bare},
      {"ab cd,ef gh", "2:ab cd|44:,|2:ef gh|1:", commas},
      {"12 x,'a,b'", "2:12 x|44:,|3:'a,b'|1:", commas},
      {"ab-cd -ab", "2:ab-cd|45:-|2:ab|1:", dash},
      {" \nab", "2:\nab|1:", lineStart},
      {"#a b,c", "7:#a b|44:,|7:c|1:", commas, hash},  // with delimiters, a hash name runs on
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.input);
    EXPECT_EQ(scan(c.input, c.options, c.type), c.tokens);
  }
  ZuScanner none;  // no text at all
  ZuToken t;
  none.getToken(t);
  EXPECT_EQ(t.type, ZU_TOKEN_END);
  EXPECT_EQ(t.bytes, nullptr);
}

TEST(ZuScanner, OperatorTable) {
  for (const char* op : {"==", "=*", "=<", "=>", "++", "&&", "||", "--", "//", "**",
                         "*=", ">=", "<=", "<>", "!=", "!<", "!>"}) {
    EXPECT_EQ(scan(op), std::to_string(pair(op[0], op[1])) + ":" + op + "|1:") << op;
  }
  for (char op : std::string("=+&|-/*><!?,().;:{}$#%@")) {
    EXPECT_EQ(scan(std::string(1, op) + "a"), std::to_string(op) + ":" + op + "|2:a|1:") << op;
  }
}

TEST(ZuScanner, DelimitedFields) {
  ZuScanner s(u("  a b ;c"));
  ZuToken t;
  s.getDelimitedToken(t, ';');
  EXPECT_EQ(t.type, ZU_TOKEN_DELIMITED);
  EXPECT_EQ(text(t), "a b");
  s.getDelimitedToken(t, ';');  // the delimiter stays to be read
  EXPECT_EQ(t.type, ZU_TOKEN_NONE);
  EXPECT_EQ(t.offset, 6u);
  EXPECT_EQ(s.position, 6u);
  // A quote byte inside another quote takes over, so the last field runs on.
  const std::string list = "'a;b';\"x'y\";z ";
  s.setScanString(u(list.c_str()), static_cast<std::uint32_t>(list.size()));
  for (const char* field : {"'a;b'", "", "\"x'y\";z"}) {
    s.getDelimitedToken(t, ';');
    EXPECT_EQ(text(t), field);
    if (*field == 0) s.getToken(t);  // steps over the delimiter
  }
  s.getDelimitedToken(t, ';');
  EXPECT_EQ(t.type, ZU_TOKEN_END);
  s.getToken(t, 1, 3);
  EXPECT_EQ(t.type, ZU_TOKEN_NONE);
  EXPECT_EQ(text(t), "a;b");
  EXPECT_EQ(s.position, s.scanLength);
}

TEST(ZuScanner, Phrases) {
  ZuScanner s(u("GROUP   BY x"));
  ZuToken t;
  s.getToken(t);
  EXPECT_EQ(s.isEqual(t, u("GROUP BY x y")), 0u);
  EXPECT_EQ(text(t), "GROUP");
  EXPECT_EQ(s.isEqual(t, u("group by")), 0u);
  EXPECT_EQ(s.isEqualCi(t, u("group by")), 1u);
  EXPECT_EQ(text(t), "GROUP   BY");
  s.setScanString(u("GROUP x"), 7);
  s.getToken(t);
  EXPECT_EQ(s.isInSet(t, u("GROUP BY\0ORDER BY\0GROUP\0")), 1u);
  EXPECT_EQ(text(t), "GROUP");
  s.getToken(t);
  EXPECT_EQ(text(t), "x");

  ZuScanner c(u("a /* c */ b"));
  c.comments = 1;
  c.getToken(t);
  EXPECT_EQ(c.isEqual(t, u("a b")), 0u);
  EXPECT_EQ(c.isTokenWithin(u("b")), 1u);
  EXPECT_EQ(c.position, c.scanLength);
  c.setScanString(u("x order  BY y"), 13);
  EXPECT_EQ(c.isTokenWithinCi(u("ORDER BY")), 1u);
  c.getToken(t);
  EXPECT_EQ(text(t), "y");
  c.unGetToken(t);
  EXPECT_EQ(c.isTokenWithin(u("z")), 0u);
  EXPECT_EQ(c.position, c.scanLength);
}

TEST(ZuScanner, RewritesItsOwner) {
  ZuString sql;
  ASSERT_EQ(sql.initialize(u("SELECT ? , ? FROM t")), ZU_OK);
  ZuScanner s(&sql);
  ZuToken t, from;
  std::vector<std::string> values = {"'it''s'", ""};
  for (std::size_t next = 0; s.getToken(t), t.type != ZU_TOKEN_END;) {
    if (t.type == '?') {
      // The token is stale once its text is changed.
      ASSERT_EQ(s.changeToken(&t, ZuSubString(u(values[next++].c_str()))), ZU_OK);
    } else if (s.isEqual(t, u("FROM"))) {
      from = t;
    }
  }
  EXPECT_EQ(text(sql), "SELECT 'it''s' ,  FROM t");
  EXPECT_EQ(text(from), "FROM");
  ASSERT_EQ(s.insertToken(&from, ZuSubString(u("/* x */ "))), ZU_OK);
  EXPECT_EQ(text(sql), "SELECT 'it''s' ,  /* x */ FROM t");
  EXPECT_EQ(text(from), "FROM");
  EXPECT_EQ(s.position, s.scanLength);
  EXPECT_EQ(s.insertToken(&from, ZuSubString()), ZU_OK);

  ZuScanner borrowed(u("a"));
  borrowed.getToken(t);
  EXPECT_EQ(borrowed.changeToken(&t, ZuSubString(u("b"))), ZU_ERROR);
  EXPECT_EQ(borrowed.insertToken(&t, ZuSubString(u("b"))), ZU_ERROR);
}

using ScannerErrors = zutest::ErrorFixture;

TEST_F(ScannerErrors, RefusedGrowthLeavesScannerAndTokenAlone) {
  ZuString big;
  ASSERT_EQ(big.initialize(u(std::string(65480, 'a').c_str())), ZU_OK);
  ZuScanner s(&big);
  ZuToken t;
  s.getToken(t);
  const std::string longer(10, 'b');
  EXPECT_EQ(s.insertToken(&t, ZuSubString(u(longer.c_str()))), ZU_ERROR);
  EXPECT_EQ(lastError(), 2716);
  const std::string replacement = std::string(65480, 'c') + longer;
  EXPECT_EQ(s.changeToken(&t, ZuSubString(u(replacement.c_str()))), ZU_ERROR);
  EXPECT_EQ(t.offset, 0u);
  EXPECT_EQ(s.position, 65480u);
  EXPECT_EQ(s.scanBytes, big.bytes);
  EXPECT_EQ(big.length, 65480u);

  // Texts large enough that the heap must ask the system for blocks.
  const std::string where = "WHERE a = ? AND " + std::string(30000, 'b');
  const std::string literal = "'" + std::string(20000, 'v') + "'";
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [&] {
        ZuString sql;
        if (sql.initialize(u(where.c_str())) != ZU_OK) return false;
        ZuScanner s(&sql);
        ZuToken t;
        while (s.getToken(t), t.type != '?') {
        }
        return s.changeToken(&t, ZuSubString(u(literal.c_str()))) == ZU_OK &&
               sql.length == where.size() + literal.size() - 1;
      },
      &report));
  EXPECT_GT(report.failures, 0u);
}

// Random texts from a small alphabet dense in quotes, brackets, comment
// marks and operators, read under every option: tokens cover the text in
// order, only white space (or a comment's line feed) between them, and each
// reads again the same after unGetToken.
TEST(ZuScanner, RandomTextsTileExactly) {
  const std::string alphabet = "ab1.'\"`(){}[]-/*#$,|=<> \n\t;\xC9\xD7";
  std::mt19937 random(6);
  for (int round = 0; round < 3000; ++round) {
    std::string input(random() % 24, ' ');
    for (char& c : input) c = alphabet[random() % alphabet.size()];
    std::vector<unsigned char> exact(input.begin(), input.end());
    ZuScanner s(exact.data(), static_cast<std::uint32_t>(exact.size()));
    s.parenBlocks = round & 1;
    s.braceBlocks = (round >> 1) & 1;
    s.comments = (round >> 2) & 1;
    if (round & 8) {
      s.blockOpen = '[';
      s.blockClose = ']';
    }
    if (round & 16) s.delimiterChars.concat(u(","));
    const auto type = static_cast<SearchType>(round % 3);
    std::uint32_t covered = 0;
    ZuToken t, again;
    do {
      s.getToken(t, type);
      ASSERT_GE(t.offset, covered) << input;
      for (std::uint32_t i = covered; i < t.offset; ++i) ASSERT_TRUE(std::isspace(exact[i]));
      ASSERT_LE(t.offset + t.length, s.position) << input;
      ASSERT_LE(s.position, s.scanLength) << input;
      ASSERT_TRUE(t.length > 0 || t.type == ZU_TOKEN_END) << input;
      covered = s.position;
      s.unGetToken(t);
      s.getToken(again, type);
      ASSERT_EQ(again.type, t.type);
      ASSERT_EQ(again.length, t.length);
    } while (t.type != ZU_TOKEN_END);
    EXPECT_EQ(t.offset, s.scanLength);
  }
}

}  // namespace
