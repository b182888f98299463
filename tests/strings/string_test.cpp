// ZuSubString and ZuString: the growth limit and exact fit, 16-bit
// measures, quoting, folding, hashing and case-blind order, and growth when
// the system refuses memory.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "memory/ram.h"
#include "strings/string.h"
#include "support/heap_check.h"

namespace {

// Fixed figures of the library: the largest buffer a string grows to, and the 16-bit
// measure of NUL-terminated texts.
constexpr std::uint32_t kLimit = 65487;
constexpr std::uint32_t kMeasureWrap = 65536;

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
const unsigned char* u(const std::string& text) { return u(text.c_str()); }
std::string text(const ZuSubString& view) {
  return view.length == 0 ? std::string() : std::string(reinterpret_cast<char*>(view.bytes), view.length);
}

struct Snapshot {
  unsigned char* bytes;
  std::uint32_t length, capacity;
  std::string content;
  explicit Snapshot(const ZuString& s) : bytes(s.bytes), length(s.length), capacity(s.capacity), content(text(s)) {}
  bool operator==(const Snapshot&) const = default;
};

TEST(ZuString, GrowsExactlyToFitUpToTheLimit) {
  ZuString s;
  EXPECT_EQ(s.bytes, nullptr);
  for (const char* piece : {"", "a", "bc", "defgh"}) {
    ASSERT_EQ(s.concat(u(piece)), ZU_OK);
    EXPECT_EQ(s.capacity, s.length + 1);
    EXPECT_EQ(ramSize(s.bytes), s.capacity);
  }
  EXPECT_STREQ(reinterpret_cast<char*>(s.getCString()), "abcdefgh");
  const std::string filler(kLimit - 1 - s.length, 'x');
  ASSERT_EQ(s.concat(u(filler)), ZU_OK);
  EXPECT_EQ(s.capacity, kLimit);
  const Snapshot full(s);
  EXPECT_EQ(s.concat(static_cast<unsigned char>('y')), ZU_ERROR);
  EXPECT_EQ(Snapshot(s), full);
  // Ten bytes below the limit: the digits would fit, the 15 asked for do not.
  s.length -= 10;
  const Snapshot roomy(s);
  EXPECT_EQ(s.concat(7u), ZU_ERROR);
  EXPECT_EQ(s.concat(-7), ZU_ERROR);
  EXPECT_EQ(Snapshot(s), roomy);
  s.length -= 5;
  EXPECT_EQ(s.concat(4294967295u), ZU_OK);
  EXPECT_EQ(s.concat(-2147483647 - 1), ZU_ERROR);
  EXPECT_EQ(text(s).substr(s.length - 10), "4294967295");
}

TEST(ZuString, BorrowedBufferNeverGrows) {
  unsigned char buffer[8];
  ZuString s;
  s.initializeWithBuffer(buffer, sizeof buffer, 0);
  for (int i = 0; i < 7; ++i) EXPECT_EQ(s.concat(static_cast<unsigned char>('a' + i)), ZU_OK);
  EXPECT_EQ(s.concat(static_cast<unsigned char>('h')), ZU_ERROR);
  EXPECT_EQ(s.bytes, buffer);
  EXPECT_EQ(text(s), "abcdefg");
  s.unInitialize();
  EXPECT_EQ(s.concat(static_cast<unsigned char>('a')), ZU_ERROR) << "still borrowing";
}

TEST(ZuString, MeasuresInSixteenBits) {
  for (std::uint32_t size : {kMeasureWrap - 1, kMeasureWrap, kMeasureWrap + 1}) {
    const std::string big(size, 'q');
    ZuString s;
    ASSERT_EQ(s.initialize(u(big)), ZU_OK);
    EXPECT_EQ(s.length, size % kMeasureWrap);
    EXPECT_EQ(ZuSubString(u(big)).length, size % kMeasureWrap);
    EXPECT_EQ(ZuSubString(u(big), size).countChar('q'), size % kMeasureWrap);
    // Initialising does not test the limit, but such a string cannot grow.
    const Snapshot before(s);
    if (s.length >= kLimit) {
      EXPECT_EQ(s.concat(static_cast<unsigned char>('r')), ZU_ERROR);
      EXPECT_EQ(Snapshot(s), before);
    }
  }
  ZuString empty;
  ASSERT_EQ(empty.initialize(u("")), ZU_OK);
  EXPECT_EQ(empty.capacity, 1u);
  EXPECT_STREQ(reinterpret_cast<char*>(empty.getCString()), "");
  ZuString bare;
  EXPECT_STREQ(reinterpret_cast<char*>(bare.getCString()), "");
}

TEST(ZuSubString, HashTakesFiveBytesFoldingOnlyAsciiLetters) {
  const ZuSubString abc(u("abcdefgh")), upper(u("ABCDE")), anagram(u("EDCBA"));
  EXPECT_EQ(abc.hash(), upper.hash());
  EXPECT_EQ(abc.hash(), anagram.hash());
  EXPECT_EQ(ZuSubString().hash(), 0u);
  std::uint32_t sum = 0;
  for (char c : std::string("ABCDE")) sum += static_cast<unsigned char>(c);
  EXPECT_EQ(abc.hash(), sum);
  // Accented letters compare equal without regard to case, yet hash apart.
  const ZuSubString lower(u("caf\xE9")), capital(u("CAF\xC9"));
  EXPECT_EQ(lower.compare(&capital), 0);
  EXPECT_EQ(lower.hash() - capital.hash(), 0x20u);
}

TEST(ZuSubString, CompareIgnoresCaseAboveAndBelow127) {
  const auto order = [](const char* a, const char* b) {
    const ZuSubString x(u(a)), y(u(b));
    return x.compare(&y);
  };
  EXPECT_EQ(order("Abc", "aBC"), 0);
  EXPECT_EQ(order("ab", "abc"), -1);
  EXPECT_EQ(order("abd", "ABC"), 1);
  EXPECT_EQ(order("\xFF", "\x9F"), 0);  // y and Y with diaeresis
  EXPECT_EQ(order("\x9A", "\x8A"), 0);  // s and S with caron
  EXPECT_EQ(order("\xE0", "b"), 1);     // A grave sorts above the ASCII letters
  EXPECT_EQ(order("\xF7", "\xD7"), 1);  // the signs have no case
  ZuString owner;
  ASSERT_EQ(owner.initialize(u("ABC")), ZU_OK);
  const ZuSubString view(u("abc"));
  EXPECT_EQ(view.compare(&owner), 0);
}

TEST(ZuSubString, SearchesAndSets) {
  ZuSubString view(u("abcabc  \t"));
  EXPECT_EQ(view.findChar('c', 3), 5u);
  EXPECT_EQ(view.findChar('c' + 256, 0), view.length);
  EXPECT_EQ(view.findSubString(u("bca"), 0), 1u);
  EXPECT_EQ(view.findSubString(u("abc"), 1), 3u);
  EXPECT_EQ(view.findSubString(u("abc  \t!"), 3), view.length) << "pattern runs past the view";
  EXPECT_EQ(view.findSubString(u(""), 0), view.length);
  view.rightBlankTrim();
  EXPECT_EQ(text(view), "abcabc");
  const unsigned char* set[] = {u("ABCABC"), u("abcabc")};
  EXPECT_EQ(view.indexInSet(set, 2), 1);
  EXPECT_EQ(view.indexInSetCi(set, 2), 0);
  EXPECT_EQ(view.indexInSet(set, 1), 1);
  ZuSubString none;
  EXPECT_EQ(none.findChar('a', 0), 0u);
  none.rightBlankTrim();
  EXPECT_EQ(none.length, 0u);
}

TEST(ZuString, QuotesDoubleTheQuoteByte) {
  ZuString s;
  ASSERT_EQ(s.initialize(u("it's")), ZU_OK);
  ASSERT_EQ(s.addQuotes('\''), ZU_OK);
  EXPECT_STREQ(reinterpret_cast<char*>(s.bytes), "'it''s'");
  unsigned char copy[16];
  ZuSubString(s).getCopyUnquoted(copy);
  EXPECT_STREQ(reinterpret_cast<char*>(copy), "it's");
  ZuString target;
  ASSERT_EQ(target.concat(u(">")), ZU_OK);
  ASSERT_EQ(s.copyQuotedStr(&target), ZU_OK);
  EXPECT_EQ(text(target), ">it's");
  s.removeQuotes();
  EXPECT_STREQ(reinterpret_cast<char*>(s.bytes), "it's");
  ZuSubString(u("a\"b")).getCopyQuoted(copy, '"');
  EXPECT_STREQ(reinterpret_cast<char*>(copy), "'a\"b'");
  ASSERT_EQ(target.addQuotedBytes(ZuSubString(u("\"\"")), '"'), ZU_OK);
  EXPECT_STREQ(reinterpret_cast<char*>(target.bytes), ">it's\"\"\"\"\"\"");
  ZuString empty;
  ASSERT_EQ(empty.addQuotes('"'), ZU_OK);
  EXPECT_EQ(text(empty), "\"\"");
}

TEST(ZuString, ChangesAndReplacements) {
  ZuString s;
  ASSERT_EQ(s.initialize(u("aaa")), ZU_OK);
  ASSERT_EQ(s.replaceSubString(u("a"), u("aa")), ZU_OK);
  EXPECT_STREQ(reinterpret_cast<char*>(s.bytes), "aaaaaa");
  ASSERT_EQ(s.replaceSubString(u("aa"), nullptr), ZU_OK);
  EXPECT_EQ(s.length, 0u);
  ASSERT_EQ(s.concat(u("one two three")), ZU_OK);
  ASSERT_EQ(s.changeBytes(4, 3, u("2"), 0), ZU_OK);
  EXPECT_STREQ(reinterpret_cast<char*>(s.bytes), "one 2 three");
  ZuSubString part(s.bytes + 6, 5);
  ASSERT_EQ(s.replaceSubString(&part, u("3!"), 2), ZU_OK);
  EXPECT_STREQ(reinterpret_cast<char*>(s.bytes), "one 2 3!");
  ASSERT_EQ(s.concat(ZuSubString(s.bytes, 4)), ZU_OK) << "appending a view of itself";
  EXPECT_EQ(text(s), "one 2 3!one ");
}

TEST(ZuString, LineEnds) {
  const auto eol = [](const char* start, int count) {
    ZuString s;
    EXPECT_EQ(s.concat(u(start)), ZU_OK);
    EXPECT_EQ(s.forceEol(count), ZU_OK);
    return text(s);
  };
  EXPECT_EQ(eol("a\r\n", 2), "a\r\n\r\n");
  EXPECT_EQ(eol("a\r\n\r\n\r\n", 2), "a\r\n\r\n\r\n");
  EXPECT_EQ(eol("a\n\r", 1), "a\n\r\r\n");
  EXPECT_EQ(eol("a", -3), "a");
  EXPECT_EQ(eol("", 1), "\r\n");
}

std::string fold(const std::string& in, std::uint32_t width, unsigned char q1 = 0, unsigned char q2 = 0) {
  ZuString s;
  EXPECT_EQ(s.initialize(u(in)), ZU_OK);
  EXPECT_EQ(s.insertLineBreaks(width, q1, q2, 0), ZU_OK);
  return text(s);
}

std::string unfold(const std::string& in, unsigned char q1 = 0) {
  ZuString s;
  EXPECT_EQ(s.initialize(u(in)), ZU_OK);
  EXPECT_EQ(s.removeLineBreaks(q1, 0, 0), ZU_OK);
  return text(s);
}

TEST(ZuString, FoldsAtBlanksOutsideQuotes) {
  EXPECT_EQ(fold("aaa bbb ccc", 5), "aaa\r\nbbb\r\nccc");
  EXPECT_EQ(fold("aaa bbb ccc", 11), "aaa bbb ccc");
  EXPECT_EQ(fold(" aaaaaaa b", 3), " aaaaaaa\r\nb") << "a leading blank is no break";
  EXPECT_EQ(fold("x 'a b c d' y", 4, '\''), "x\r\n'a b c d'\r\ny");
  EXPECT_EQ(fold("'a\"b' c d", 2, '\'', '"'), "'a\"b' c d") << "quote replaced inside a quote";
  EXPECT_EQ(unfold("a\r\n\r\nb"), "a b");
  EXPECT_EQ(unfold("a\r\n"), "a");
  EXPECT_EQ(unfold("a\rb\nc"), "a\rb\nc");
  EXPECT_EQ(unfold("'a\r\nb' c\r\nd", '\''), "'a\r\nb' c d");
}

TEST(ZuString, FoldingAndUnfoldingAreInverse) {
  std::mt19937 random(11);
  for (int round = 0; round < 200; ++round) {
    std::string words;
    for (int w = random() % 30; w >= 0; --w) {
      words += std::string(1 + random() % 9, static_cast<char>('a' + random() % 26));
      if (w != 0) words += ' ';
    }
    const std::uint32_t width = random() % 20;
    const std::string folded = fold(words, width);
    for (std::size_t line = 0, end; line < folded.size(); line = end + 2) {
      end = folded.find("\r\n", line);
      if (end == std::string::npos) end = folded.size();
      // A line runs past the width only where it holds no blank to break at.
      if (end - line > width) {
        EXPECT_EQ(folded.substr(line, end - line).find(' '), std::string::npos);
      }
    }
    EXPECT_EQ(unfold(folded), words);
  }
}

// Growth when the system refuses every further block. The sizes are large
// enough that no free space already in the heap can serve them.
class StringMemoryFailure : public ::testing::Test {
 protected:
  void refuseNewBlocks() { zu::platform::hostFail(zu::platform::HostCall::malloc, 1, ENOMEM, true); }
  void TearDown() override { EXPECT_TRUE(zutest::heapIsSound()); }
  zutest::FaultGuard faults;
};

TEST_F(StringMemoryFailure, GrowthKeepsTheOldText) {
  ZuString s;
  ASSERT_EQ(s.initialize(u("kept")), ZU_OK);
  const Snapshot before(s);
  refuseNewBlocks();
  const std::string big(60000, 'b');
  EXPECT_EQ(s.concat(u(big)), ZU_ERROR);
  EXPECT_EQ(s.ensureRoom(60000), ZU_ERROR);
  EXPECT_EQ(s.changeBytes(0, 1, u(big), 0), ZU_ERROR);
  EXPECT_EQ(Snapshot(s), before);
  EXPECT_TRUE(zutest::heapIsSound());
  ZuString fresh;
  EXPECT_EQ(fresh.initialize(u(big)), ZU_ERROR);
  EXPECT_EQ(fresh.bytes, nullptr);
  EXPECT_EQ(fresh.length, big.size());
}

TEST_F(StringMemoryFailure, FoldingAndQuotingLeaveTheTextUnchanged) {
  std::string words;
  while (words.size() < 30000) words += "word\r\n";
  ZuString s;
  ASSERT_EQ(s.initialize(u(words)), ZU_OK);
  const Snapshot before(s);
  refuseNewBlocks();
  EXPECT_EQ(s.insertLineBreaks(10, 0, 0, 0), ZU_ERROR);
  EXPECT_EQ(s.removeLineBreaks(0, 0, 0), ZU_ERROR);
  EXPECT_EQ(s.addQuotes('"'), ZU_ERROR);
  EXPECT_EQ(Snapshot(s), before);
}

}  // namespace
