// ZuValueParser: the grammar's accepted and refused strings with the offset
// and words of each refusal, the queries and their used marks, adding,
// replacing, removing and writing back, random tables that survive a
// write and a parse, and every allocation refused in turn.
#include "parsing/value_parser.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "errors/keeper.h"
#include "frame/thread.h"
#include "support/error_fixture.h"
#include "support/oom_sweep.h"

namespace {

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
std::string str(const ZuSubString* view) {
  if (view == nullptr) return "(null)";
  return view->length == 0 ? std::string() : std::string(reinterpret_cast<char*>(view->bytes), view->length);
}

constexpr unsigned short kParseAtOffset = 2704;
constexpr unsigned short kParseNamedAtOffset = 2705;

// The table as "key=value|key=value", read by index so nothing is marked.
std::string table(ZuValueParser& p) {
  std::string out;
  for (unsigned short i = 0; const ZuSubString* key = p.getAttributeKey(i); ++i) {
    if (i != 0) out += "|";
    out += str(key) + "=" + str(static_cast<const ZuSubString*>(p.attributes.getPtrDataAtIndex(i)));
  }
  return out;
}

std::string atOffset(unsigned offset) {
  return "Error parsing connect string at offset " + std::to_string(offset) + ". ";
}

class ValueParser : public zutest::ErrorFixture {
 protected:
  void clearErrors() {
    while (ZuError* e = list.removeFirstError()) {
      if (e->isStatic() == 0) delete e;
    }
  }
};

// A parser over its own copy of the text, initialized.
struct Parsed {
  Parsed(const std::string& input, unsigned char separator = ';', const char* name = nullptr)
      : text(input),
        view(u(text.data()), static_cast<std::uint32_t>(text.size())),
        parser(&view, separator, name != nullptr ? u(name) : nullptr),
        status(parser.initialize()) {}
  std::string text;
  ZuSubString view;
  ZuValueParser parser;
  ZuStatus status;
};

struct Case {
  const char* input;
  unsigned char separator;
  const char* table;  // what stands in the table afterwards
  int failsAt;        // offset of the refusal, or -1
};

TEST_F(ValueParser, GrammarAcceptsAndRefusesAtTheTokenAtFault) {
  const Case cases[] = {
      {"", ';', "", -1},
      {"DSN=x;UID=y", ';', "DSN=x|UID=y", -1},
      {"a=1;", ';', "a=1", -1},
      {";a=1", ';', "", 0},
      {"a=1;;b=2", ';', "a=1", 4},
      {"a=", ';', "a=", -1},
      {"a=;b=2", ';', "a=|b=2", -1},
      {"a = b c ; d=e", ';', "a=b c|d=e", -1},
      {"a='x;y';b=2", ';', "a='x;y'|b=2", -1},
      {"a={x;y}", ';', "a={x", 6},
      {"a=x'y;z'w", ';', "a=x'y;z'w", -1},
      {"a='x\"y';b=2", ';', "a='x\"y';b=2", -1},
      {"a='x'''", ';', "a='x'''", -1},           // doubled quotes at the very end
      {"a='x;b=2", ';', "a='x;b=2", -1},         // a quote left open runs to the end
      {"a={x", ';', "a={x", -1},                 // braces mean nothing
      {"a b=1", ';', "", 2},
      {"a.b=1", ';', "", 1},
      {"a-b=1", ';', "", 1},
      {"1a=2", ';', "", 0},
      {"'a'=1", ';', "", 0},
      {"\xC9t\xE9=1;\xD7=2", ';', "\xC9t\xE9=1", 6},  // 215 starts no word
      {"a=*x", ';', "", 1},
      {"a= *x", ';', "a=*x", -1},
      {"a==x", ';', "", 1},
      {"a", ';', "", 1},
      {"a=1;b", ';', "a=1", 5},
      {"a=1,b=2", ',', "a=1|b=2", -1},
      {"a=1,b=x;y", ',', "a=1|b=x;y", -1},
      {"a=1^b=2", '^', "a=1", 3},  // ^ is no token of its own
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.input);
    Parsed p(c.input, c.separator);
    EXPECT_EQ(table(p.parser), c.table);
    if (c.failsAt < 0) {
      EXPECT_EQ(p.status, ZU_OK);
      EXPECT_EQ(list.nodeCount, 0u);
    } else {
      EXPECT_EQ(p.status, ZU_ERROR);
      EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), kParseAtOffset);
      EXPECT_EQ(lastText(), atOffset(c.failsAt));
    }
    clearErrors();
  }
}

TEST_F(ValueParser, RepeatedKeywordIsRefusedWhenReadInAnyCase) {
  struct Case {
    const char *input, *name;
    unsigned short number;
    std::string words;
    const char* table;
  };
  const Case cases[] = {
      {"a=1;A=2", nullptr, kParseAtOffset, atOffset(4) + " Attribute 'A' specified more than once.", "a=1"},
      // Refused before its missing '=' is seen.
      {"UID=a;uId", nullptr, kParseAtOffset, atOffset(6) + " Attribute 'uId' specified more than once.", "UID=a"},
      {"UID=a;UID=b", "x.dsn", kParseNamedAtOffset,
       "Error parsing x.dsn at offset 6. Attribute 'UID' specified more than once.", "UID=a"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.input);
    Parsed p(c.input, ';', c.name);
    EXPECT_EQ(p.status, ZU_ERROR);
    EXPECT_EQ(ZuErrorKeeper::getLastErrorNumber(), c.number);
    EXPECT_EQ(lastText(), c.words);
    EXPECT_EQ(table(p.parser), c.table);
    clearErrors();
  }
}

TEST_F(ValueParser, LookupsIgnoreCaseAndMarkWhatWasRead) {
  Parsed p("DSN=x;UID=y;Extra=z");
  ASSERT_EQ(p.status, ZU_OK);
  EXPECT_EQ(str(p.parser.getAttributeValue(u("uid"))), "y");
  EXPECT_EQ(p.parser.getAttributeValue(u("PWD")), nullptr);
  EXPECT_EQ(p.parser.isAttributeValue(u("dsn")), 1u);
  EXPECT_EQ(p.parser.isAttributeValue(u("PWD")), 0u);
  EXPECT_EQ(p.parser.getUnusedCount(), 2);  // isAttributeValue marks nothing

  EXPECT_EQ(str(p.parser.getUnusedAttribute()), "DSN");
  EXPECT_EQ(str(p.parser.getUnusedAttribute()), "Extra");
  EXPECT_EQ(p.parser.getUnusedAttribute(), nullptr);
  p.parser.getAttributeValue(u("dsn"));
  EXPECT_EQ(p.parser.getUnusedAttribute(), nullptr);  // one walk only
  EXPECT_EQ(p.parser.getUnusedCount(), 1);
  Parsed empty("a=");
  EXPECT_EQ(p.parser.getAttributeKey(3), nullptr);
  ASSERT_NE(empty.parser.getAttributeValue(u("a")), nullptr);
  EXPECT_EQ(empty.parser.getAttributeValue(u("a"))->length, 0u);
}

TEST_F(ValueParser, KeywordAndAliasMayNotBothBeGiven) {
  const ZuSubString* v = nullptr;
  Parsed second("UID=u;PASSWORD=p");
  EXPECT_EQ(second.parser.getAttributeValue(u("PWD"), u("PASSWORD"), v), ZU_OK);
  EXPECT_EQ(str(v), "p");
  Parsed neither("UID=u");
  EXPECT_EQ(neither.parser.getAttributeValue(u("PWD"), u("PASSWORD"), v), ZU_OK);
  EXPECT_EQ(v, nullptr);

  Parsed both("PWD=a;password=b;UID=u");
  const ZuSubString untouched(u("untouched"));
  v = &untouched;
  EXPECT_EQ(both.parser.getAttributeValue(u("PWD"), u("PASSWORD"), v), ZU_ERROR);
  EXPECT_EQ(v, &untouched);
  EXPECT_EQ(lastText(), atOffset(22) + " Attribute specified twice using keywords 'PWD' and 'PASSWORD'.");
  EXPECT_EQ(both.parser.getUnusedCount(), 1);
}

TEST_F(ValueParser, AddedValuesAreQuotedOnlyWhenTheyMustBe) {
  Parsed p("PWD=old;UID=u");
  const ZuStatus added[] = {
      p.parser.addAttribute(u("a"), u("it's"), nullptr),
      p.parser.addAttribute(u("b"), u("x;y"), nullptr),
      p.parser.addAttribute(u("c"), u("x\"y"), nullptr),
      p.parser.addAttribute(u("d"), u("x y`z,{w}"), nullptr),
      p.parser.addAttribute(u("PASSWORD"), u("z"), u("PWD")),  // found through the alias
      p.parser.addAttribute(u("uid"), u("v"), u("PWD")),       // the key itself comes first
  };
  for (const ZuStatus s : added) EXPECT_EQ(s, ZU_OK);
  ZuString out;
  ASSERT_EQ(p.parser.buildString(&out), ZU_OK);
  EXPECT_EQ(str(&out), "PWD=z;UID=v;a='it''s';b='x;y';c='x\"y';d=x y`z,{w}");

  Parsed comma("a=1", ',');
  comma.parser.addAttribute(u("b"), u("x;y"), nullptr);
  comma.parser.addAttribute(u("c"), u("x,y"), nullptr);
  comma.parser.buildString(&out);
  EXPECT_EQ(str(&out), "a=1,b=x;y,c='x,y'");

  Parsed spaced("a = 1 ; b='2'");
  out.concat(u("stale"));
  spaced.parser.buildString(&out);
  EXPECT_EQ(str(&out), "a=1;b='2'");
}

TEST_F(ValueParser, RemovingMovesLaterAttributesButNotTheBits) {
  Parsed p("a=1;b=2;c=3");
  p.parser.getAttributeValue(u("c"));
  p.parser.removeAttribute(u("x"));
  EXPECT_EQ(table(p.parser), "a=1|b=2|c=3");
  p.parser.removeAttribute(u("A"));
  EXPECT_EQ(table(p.parser), "b=2|c=3");
  EXPECT_EQ(p.parser.getUnusedCount(), 2);  // c's mark stayed at index 2
}

// The two choices left open: a parser without bits marks nothing and
// counts everything unused; attributes added past the bits get bits.
TEST_F(ValueParser, MarksStaySoundWithoutBitsAndPastThem) {
  Parsed failed("a=1;b");
  EXPECT_EQ(str(failed.parser.getAttributeValue(u("a"))), "1");
  EXPECT_EQ(failed.parser.getUnusedCount(), 1);
  EXPECT_EQ(str(failed.parser.getUnusedAttribute()), "a");

  Parsed p("a=1");
  for (int i = 0; i < 40; ++i) {
    ASSERT_EQ(p.parser.addAttribute(u(("k" + std::to_string(i)).c_str()), u("v"), nullptr), ZU_OK);
  }
  EXPECT_EQ(p.parser.getUnusedCount(), 41);
  p.parser.getAttributeValue(u("k39"));
  p.parser.getAttributeValue(u("k7"));
  EXPECT_EQ(p.parser.getUnusedCount(), 39);
  for (const ZuSubString* k; (k = p.parser.getUnusedAttribute()) != nullptr;) {
    EXPECT_NE(str(k), "k39");
    EXPECT_NE(str(k), "k7");
  }
}

// Random keys and values (quotes, separators, braces, high bytes, blanks
// inside) written with addAttribute and buildString parse back to the same
// stored values, which unquote to what was added. A " or an unpaired `
// opens a quote that runs on, so the values keep to ' among quote bytes.
TEST_F(ValueParser, RandomTablesSurviveWritingAndParsing) {
  const std::string keyStart = "aZ_\xC0\xDE\xF8";
  const std::string valueBytes = "ab9'';;,{}[]= .\xE9\xFF\x80\xA0*<>";
  std::mt19937 random(62);
  for (int round = 0; round < 400; ++round) {
    const unsigned char separator = round % 2 == 0 ? ';' : ',';
    ZuValueParser built(nullptr, separator, nullptr);
    std::vector<std::string> values;
    const unsigned pairs = random() % 13;
    for (unsigned i = 0; i < pairs; ++i) {
      const std::string key = std::string(1, keyStart[random() % keyStart.size()]) + std::to_string(i);
      std::string value(random() % 10, 'x');
      for (char& c : value) c = valueBytes[random() % valueBytes.size()];
      // The scanner reads ==, =*, =<, => as one token and trims the ends.
      if (!value.empty() && std::string("=*<> ").find(value.front()) != std::string::npos) value.front() = 'q';
      if (!value.empty() && value.back() == ' ') value.back() = 'q';
      values.push_back(value);
      ASSERT_EQ(built.addAttribute(u(key.c_str()), u(value.c_str()), nullptr), ZU_OK);
    }
    ZuString text;
    ASSERT_EQ(built.buildString(&text), ZU_OK);
    SCOPED_TRACE(str(&text));
    ZuValueParser again(&text, separator, nullptr);
    ASSERT_EQ(again.initialize(), ZU_OK);
    EXPECT_EQ(table(again), table(built));
    for (unsigned short i = 0; i < again.attributes.count; ++i) {
      const auto* v = static_cast<const ZuSubString*>(again.attributes.getPtrDataAtIndex(i));
      ZuString plain;
      if (v->length != 0 && v->bytes[0] == '\'') {
        v->copyQuotedStr(&plain);
      } else {
        plain.initialize(*v);
      }
      EXPECT_EQ(str(&plain), values[i]);
    }
  }
}

// Enough pairs, and values long enough, to need many system blocks.
TEST_F(ValueParser, OutOfMemoryInParsingAndAdding) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += "Key" + std::to_string(i) + " = value " + std::to_string(i) + ";";
  zutest::SweepReport report;
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [&] {
        Parsed p(text);
        return p.status == ZU_OK && str(p.parser.getAttributeValue(u("key299"))) == "value 299";
      },
      &report));
  EXPECT_GT(report.failures, 20u);

  const std::string big(12000, 'v');  // four of them stay below the string limit
  const std::string quoted = big + "'";
  report = {};
  EXPECT_TRUE(zutest::sweepOutOfMemory(
      [&] {
        Parsed p("PWD=a;UID=b");
        ZuString out;
        for (int i = 0; i < 3; ++i) {
          const std::string key = "k" + std::to_string(i);
          if (p.parser.addAttribute(u(key.c_str()), u(quoted.c_str()), nullptr) != ZU_OK) return false;
        }
        return p.parser.addAttribute(u("PASSWORD"), u(big.c_str()), u("PWD")) == ZU_OK &&
               p.parser.addAttribute(u("UID"), u("it's"), nullptr) == ZU_OK &&
               p.parser.buildString(&out) == ZU_OK && out.length == 4 * big.size() + 40;
      },
      &report));
  EXPECT_GT(report.failures, 3u);
}

}  // namespace
