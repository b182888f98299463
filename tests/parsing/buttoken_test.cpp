// The older tokenizer over its modes and edge cases, table-driven: each row
// is cut to the end, token by token, in a buffer of exactly the size the
// mode allows (80 bytes, or the text's length in the unlimited modes), so
// that the sanitizers see any write past it. A token that the function
// moved to a block is read from there and freed.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "memory/ram.h"
#include "parsing/buttoken.h"
#include "support/error_fixture.h"

namespace {

constexpr std::size_t kTokenSize = 80;
constexpr unsigned short T = BUT_TOKEN_TRUNCATE;
constexpr unsigned short A = BUT_TOKEN_ALLOCATE;
constexpr unsigned short K = BUT_TOKEN_KEEP_CASE;

struct Case {
  unsigned short flags;
  std::string text;
  // The tokens in order; the last is followed by the empty token, unless it
  // is an error, written "#id text".
  std::vector<std::string> tokens;
};

const std::string word80 = std::string(79, 'w') + "z";
const std::string word200(200, 'q');
const std::string upper200(200, 'Q');

const std::vector<Case> kCases = {
    {0, "", {}},
    {0, " \t\r\n\v\f", {}},
    {0, "  select x", {"SELECT", "X"}},
    {K, "select Mixed", {"select", "Mixed"}},
    {0, "a.b", {"A", ".", "B"}},
    {0, "12.5x .5 1.2.3", {"12.5", "X", ".5", "1.2", ".3"}},
    {0, "1e5", {"1", "E5"}},
    {0, "<> <= >= != !< !> || ** *= =*", {"<>", "<=", ">=", "!=", "!<", "!>", "||", "**", "*=", "=*"}},
    {0, "== && <<", {"=", "=", "&", "&", "<", "<"}},
    {0, "(+) (+ )", {"(+)", "(", "+", ")"}},
    {0, "? x ?abc ?1 ?\xE9t\xE9 ?_", {"?", "X", "?abc", "?", "1", "?\xE9t\xE9", "?", "_"}},
    {0, "{abc} {a b}c", {"{abc}", "{a b}", "C"}},
    {0, "{abc", {"#2703 {abc"}},
    {0, "'abc' \"a\"\"b\" 'it''s'x", {"'abc'", "\"a\"b\"", "'it's'", "X"}},
    {0, "'abc", {"#2703 'abc"}},
    {0, "'", {"#2703 '"}},
    {0, "'abc''", {"'abc'"}},
    {0, "\xE9t\xE9 \x9A", {"\xC9T\xC9", "\x8A"}},
    {1, "C:\\DIR\\F.TXT,x", {"C:\\DIR\\F.TXT", ",", "X"}},
    {1, "`a b,c`d e", {"`A B,C`D", "E"}},
    {1, "a|b (+) ||", {"A", "|", "B", "(+)", "||"}},
    {2, "#tmp$1 a\\-b a\\b", {"#TMP$1", "A\\-B", "A", "\\", "B"}},
    {2, "a\\", {"A", "\\"}},
    {3, "a.b", {"A", ".B"}},
    {3, ".a.b ..x", {".A.", "B", "..", "X"}},
    {3, "12.abc", {"12", ".ABC"}},
    {4, "12:30.5 :a 1x", {"12:30.5", ":A", "1X"}},
    {4, word200, {upper200}},
    {6, "#" + word200, {"#" + upper200}},
    {5, "abc def, ghi", {"ABC DEF, GHI"}},
    {5, ", abc", {",", "ABC"}},
    {0, word80, {"#2700 " + std::string(79, 'w')}},
    {T, word80 + " x", {std::string(78, 'W') + "Z", "X"}},
    {T | A, word80, {std::string(79, 'W') + "Z"}},
    {A, word80 + " x", {std::string(79, 'W') + "Z", "X"}},
    {A, "'" + word80, {"#2703 '" + word80}},
    {A | K, "'" + word80 + "'", {"'" + word80 + "'"}},
    {T, "'" + word80 + "''", {"'" + std::string(77, 'w') + "'"}},
    {9, "abc", {"ABC"}},
};

class Buttoken : public zutest::ErrorFixture {
 protected:
  // Cuts `c.text` to the end and returns what came, in the table's form.
  std::vector<std::string> cut(const Case& c) {
    const unsigned mode = c.flags & 0x0FFF;
    const bool unlimited = mode == 4 || mode == 6;
    std::vector<unsigned char> text(c.text.begin(), c.text.end());
    text.push_back(0);
    const std::size_t size = unlimited ? text.size() : kTokenSize;
    std::vector<std::string> got;
    const unsigned char* cursor = text.data();
    for (int guard = 0; guard < 100; ++guard) {
      auto* token = new unsigned char[size];
      std::memset(token, 0, size);
      const unsigned char* before = cursor;
      const ZuStatus status = buttoken(token, &cursor, c.flags);
      unsigned char* block = nullptr;
      if (!unlimited) std::memcpy(&block, token + 2, sizeof block);
      if (status != ZU_OK) {
        EXPECT_EQ(cursor, before) << "a failure leaves the cursor";
        got.push_back("#" + std::to_string(lastError()) + " " + lastText().substr(lastText().find(": ") + 2));
        delete[] token;
        break;
      }
      EXPECT_TRUE(cursor >= before && cursor < text.data() + text.size());
      std::string value;
      if (block != nullptr && token[1] == 0) {
        const unsigned char* first = before;
        while (*first == ' ') ++first;
        EXPECT_EQ(token[0], *first) << "the first byte as read stays in the buffer";
        value = reinterpret_cast<const char*>(block);
        ramFree(block);
      } else {
        value = reinterpret_cast<const char*>(token);
      }
      delete[] token;
      if (value.empty()) {
        EXPECT_EQ(*cursor, 0) << "the empty token only at the end";
        break;
      }
      got.push_back(value);
    }
    return got;
  }
};

TEST_F(Buttoken, CutsEveryModeAsTheRulesSay) {
  for (const Case& c : kCases) {
    EXPECT_EQ(cut(c), c.tokens) << "flags " << c.flags << ", text [" << c.text << "]";
  }
}

}  // namespace
