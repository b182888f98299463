// ZuParamString: markers by order of setting across both kinds, the tenth
// marker's own form, values that widen the text, failure that silences a
// chain. ZuReplaceString: the gap, widening with a source inside the moving
// input, quoting, and how the target is left at the end.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "memory/ram.h"
#include "strings/param_string.h"
#include "strings/replace_string.h"
#include "support/error_fixture.h"
#include "support/heap_check.h"

namespace {

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
std::string str(ZuString& s) { return reinterpret_cast<char*>(s.getCString()); }

std::string filled(const char* pattern, auto... values) {
  ZuParamString p;
  EXPECT_EQ(p.initialize(u(pattern)), ZU_OK);
  (p << ... << values);
  return str(p);
}

TEST(ZuParamString, FillsMarkersInOrderOfSetting) {
  EXPECT_EQ(filled("Cannot rename '%s1' to '%s2'.", u("a"), u("b")), "Cannot rename 'a' to 'b'.");
  EXPECT_EQ(filled("%s1 %s1", u("x")), "x x");
  EXPECT_EQ(filled("%n1: %s2", 7, u("t")), "7: t");
  EXPECT_EQ(filled("%n1", -5), "-5");
  EXPECT_EQ(filled("%n1|%n2", 4294967295u, -2147483647 - 1), "4294967295|-2147483648");
  // The kind letter must match: a number does not fill a text marker.
  EXPECT_EQ(filled("%s1", 3), "%s1");
  // A value holding the next marker is filled by the next value.
  EXPECT_EQ(filled("%s1 x", u("%s2"), u("y")), "y x");
  // An empty view and a null text remove the marker.
  EXPECT_EQ(filled("[%s1][%s2]", ZuSubString(u("zz"), 0), static_cast<const unsigned char*>(nullptr)),
            "[][]");
  // A view is taken by its length, NULs and all.
  EXPECT_EQ(filled("<%s1>", ZuSubString(u("abcdef"), 3)), "<abc>");
  // A marker never set stays as it is.
  EXPECT_EQ(filled("%s1 and %s2", u("one")), "one and %s2");
  // A lone percent is text.
  EXPECT_EQ(filled("100% %s1 %", u("sure")), "100% sure %");
}

TEST(ZuParamString, TenthMarkerAndBeyond) {
  ZuParamString p;
  ASSERT_EQ(p.initialize(u("%s1 %s10 %sx10 %nx11 %sx12")), ZU_OK);
  p << u("one");
  // "%s10" reads as the first marker followed by a 0.
  EXPECT_EQ(str(p), "one one0 %sx10 %nx11 %sx12");
  for (int i = 2; i <= 9; ++i) p << u("-");
  p << u("ten") << 11 << u("twelve");
  EXPECT_EQ(str(p), "one one0 ten 11 twelve");
  EXPECT_EQ(p.paramCount, 12);
}

TEST(ZuParamString, TemplateWithoutMarkersStillCounts) {
  ZuParamString p;
  ASSERT_EQ(p.initialize(u("plain")), ZU_OK);
  for (int i = 0; i < 15; ++i) EXPECT_EQ(p.setParam(u("v")), ZU_OK);
  EXPECT_EQ(str(p), "plain");
  EXPECT_EQ(p.paramCount, 15);
  p.resetParams();
  ASSERT_EQ(p.concat(u(" %s1")), ZU_OK);
  p << u("again");
  EXPECT_EQ(str(p), "plain again");
  // Initializing again drops the text and restarts the count.
  ASSERT_EQ(p.initialize(u("%s1")), ZU_OK);
  p << u("fresh");
  EXPECT_EQ(str(p), "fresh");
  EXPECT_EQ(p.paramCount, 1);
}

TEST(ZuParamString, QuotedParameterDoublesItsQuotes) {
  ZuParamString p;
  ASSERT_EQ(p.initialize(u("name=%s1")), ZU_OK);
  EXPECT_EQ(p.setQuotedParam(u("it's"), '\''), ZU_OK);
  EXPECT_EQ(str(p), "name='it''s'");
}

using ParamErrors = zutest::ErrorFixture;

TEST_F(ParamErrors, ValueWideningPastTheLimitFailsAndSilencesTheChain) {
  // Every occurrence grows the text by 40,000 bytes: the first fits, the
  // second passes the string limit.
  const std::string big(40000, 'v');
  ZuParamString p;
  ASSERT_EQ(p.initialize(u("%s1|%s1|%s2")), ZU_OK);
  EXPECT_EQ(p.setParam(u(big.c_str())), ZU_ERROR);
  EXPECT_EQ(p.failed, 1u);
  EXPECT_EQ(lastError(), 2716);
  EXPECT_EQ(str(p), big + "|%s1|%s2");
  p << u("never");
  EXPECT_EQ(p.paramCount, 1);
  // The direct call does not look at the flag; a good initialize clears it.
  EXPECT_EQ(p.setParam(u("x")), ZU_OK);
  EXPECT_EQ(str(p), big + "|%s1|x");
  ASSERT_EQ(p.initialize(u("%s1")), ZU_OK);
  EXPECT_EQ(p.failed, 0u);
}

TEST(ZuParamString, FailedInitializeLeavesAnEmptyTextAndASilentChain) {
  zutest::FaultGuard faults;
  ZuParamString p;
  zu::platform::hostFail(zu::platform::HostCall::malloc, 1, ENOMEM, true);
  EXPECT_EQ(p.initialize(u("%s1 and more")), ZU_ERROR);
  zu::platform::hostRestoreAll();
  EXPECT_EQ(p.failed, 1u);
  EXPECT_EQ(p.length, 0u);
  EXPECT_EQ(p.bytes, nullptr);
  p << u("ignored") << 5;
  EXPECT_EQ(p.paramCount, 0);
}

// The rewriter, driven as a client would: copy, insert, drop.
TEST(ZuReplaceString, RewritesInPlaceAndFitsTheBufferAtTheEnd) {
  ZuString s;
  ASSERT_EQ(s.initialize(u("abcdef")), ZU_OK);
  unsigned char* const original = s.bytes;
  {
    ZuReplaceString r(&s);
    r.passBytes(6);
  }
  // No insertion: only the length is set, the buffer stays as it was.
  EXPECT_EQ(s.bytes, original);
  EXPECT_EQ(s.capacity, 7u);
  {
    ZuReplaceString r(&s);
    r.passBytes(2);
    ASSERT_EQ(r.addBytes(u("XYZ"), 3), ZU_OK);  // widens by 3 + 512
    EXPECT_EQ(r.readOffset - r.writeOffset, 512u);
    r.skipBytes(1);
    r.passBytes(3);
  }
  EXPECT_EQ(str(s), "abXYZdef");
  EXPECT_EQ(s.capacity, s.length + 1);
  EXPECT_EQ(ramSize(s.bytes), s.capacity);
}

TEST(ZuReplaceString, SourceInsideTheMovingInputIsFollowed) {
  // Longer than one widening, so the move overwrites where the source was.
  std::string input(600, ' ');
  for (std::size_t i = 0; i < input.size(); ++i) input[i] = static_cast<char>('A' + i % 26);
  ZuString s;
  ASSERT_EQ(s.initialize(u(input.c_str())), ZU_OK);
  {
    ZuReplaceString r(&s);
    ASSERT_EQ(r.addBytes(r.bytes + 520, 3), ZU_OK);
    r.passBytes(600);
    // From the output, which stays put.
    ASSERT_EQ(r.addBytes(s.bytes, 2), ZU_OK);
  }
  EXPECT_EQ(str(s), input.substr(520, 3) + input + input.substr(520, 2));
}

TEST(ZuReplaceString, InsertionsPastTheSlackWidenAgain) {
  ZuString s;
  ASSERT_EQ(s.initialize(u("<>")), ZU_OK);
  const std::string big(700, 'b');
  {
    ZuReplaceString r(&s);
    r.passBytes(1);
    ASSERT_EQ(r.addBytes(u(big.c_str()), 700), ZU_OK);  // more than the slack at once
    EXPECT_EQ(r.readOffset - r.writeOffset, 512u);
    for (int i = 0; i < 600; ++i) ASSERT_EQ(r.addByte('c'), ZU_OK);  // and bit by bit
    r.passBytes(1);
  }
  EXPECT_EQ(str(s), "<" + big + std::string(600, 'c') + ">");
  EXPECT_EQ(s.capacity, s.length + 1);
}

TEST(ZuReplaceString, QuotesBytesEvenFromItsOwnInput) {
  ZuString s;
  ASSERT_EQ(s.initialize(u("it's")), ZU_OK);
  {
    ZuReplaceString r(&s);
    const unsigned char* input = r.bytes;
    r.skipBytes(4);
    ASSERT_EQ(r.addQuotedBytes(input, 4, '\''), ZU_OK);
  }
  EXPECT_EQ(str(s), "'it''s'");
  EXPECT_EQ(s.capacity, s.length + 1);
}

TEST(ZuReplaceString, NullTargetAndBorrowedBuffer) {
  { ZuReplaceString nothing(nullptr); }
  unsigned char lent[16] = "abcdef";
  ZuString s;
  s.initializeWithBuffer(lent, sizeof lent, 6);
  {
    ZuReplaceString r(&s);
    r.skipBytes(2);
    r.passBytes(4);
  }
  // Shortened in place; a lent buffer is never resized.
  EXPECT_EQ(str(s), "cdef");
  EXPECT_EQ(s.bytes, lent);
  EXPECT_EQ(s.capacity, sizeof lent);
}

}  // namespace
