#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "strings/bytes.h"

#include <sys/mman.h>
#include <unistd.h>

namespace {

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
std::string s(const unsigned char* text) { return reinterpret_cast<const char*>(text); }

TEST(BytePrimitives, CopiesChainAndStopWhereTold) {
  unsigned char buffer[32];
  unsigned char* end = BUTSTCPY(buffer, u("con"));
  end = BUTSTCAT(buffer, u("nect"));
  end = BUTSTCPY(end, u("ion"));
  EXPECT_EQ(s(buffer), "connection");
  EXPECT_EQ(end, buffer + 10);
  EXPECT_EQ(strCopy(buffer, u("abcdef"), 2), buffer + 2);
  EXPECT_EQ(s(buffer), "ab");

  std::memset(buffer, '#', sizeof buffer);
  strCopy(buffer, 4, u("abcdef"));
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 5), std::string("abc\0#", 5));
  strCopy(buffer, 1, u("abc"));
  EXPECT_EQ(s(buffer), "");
  std::memset(buffer, '#', sizeof buffer);
  strCopy(buffer, 8, u("ab"));  // through the NUL, no padding after it
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 8), std::string("ab\0####\0", 8));
}

TEST(BytePrimitives, CountsWrapAtSixteenBits) {
  std::string text(70000, 'x');
  EXPECT_EQ(BUTSTLEN(u(text.c_str())), 4464);
  EXPECT_EQ(BUTSTLEN(u(text.substr(0, 65535).c_str())), 65535);
  EXPECT_EQ(BUTSTLEN(u(text.substr(0, 65536).c_str())), 0);
  // Measured texts use the same measure: a 65536-byte text quotes as empty.
  std::vector<unsigned char> out(8);
  EXPECT_EQ(strCopyQuoted(out.data(), u(text.substr(0, 65536).c_str()), '"'), out.data() + 2);

  std::vector<unsigned char> a(70001, 7), b(70001, 7);
  b[70000] = 8;
  EXPECT_EQ(BUTMMCMP(a.data(), b.data(), 65535), 0);
  EXPECT_EQ(memCompareHuge(a.data(), b.data(), 70001), -1);
  BUTU8FIL(a.data(), 1, 65535);
  memFillHuge(b.data(), 2, 70001);
  EXPECT_EQ(a[65534], 1);
  EXPECT_EQ(a[65535], 7);
  EXPECT_EQ(b[70000], 2);
  memCopyHuge(a.data(), b.data(), 70001);
  EXPECT_EQ(a, b);
}

// Each copy against the byte loop it stands for, with the destination
// below, on and above the source.
TEST(BytePrimitives, OverlappingCopiesKeepTheirByteOrder) {
  using Copy = void (*)(unsigned char*, unsigned char*, size_t);
  const Copy up = [](unsigned char* d, unsigned char* s, size_t n) {
    for (size_t i = 0; i < n; ++i) d[i] = s[i];
  };
  const Copy down = [](unsigned char* d, unsigned char* s, size_t n) {
    for (size_t i = n; i-- > 0;) d[i] = s[i];
  };
  const std::pair<Copy, Copy> copies[] = {
      {[](unsigned char* d, unsigned char* s, size_t n) { BUTMEMCP(d, s, n); }, up},
      {[](unsigned char* d, unsigned char* s, size_t n) { memCopyHuge(d, s, n); }, up},
      {[](unsigned char* d, unsigned char* s, size_t n) { BUTMMCPD(d, s, n); }, down}};
  for (const auto& [copy, loop] : copies) {
    // Every short count, since short moves are pieced by size; then a long one.
    std::vector<size_t> counts(141);
    std::iota(counts.begin(), counts.end(), 0);
    counts.push_back(1000);
    for (size_t count : counts) {
      for (int shift = -40; shift <= 40; shift += count <= 140 ? 3 : 1) {
        std::vector<unsigned char> mine(1200), want;
        std::iota(mine.begin(), mine.end(), 0);
        want = mine;
        copy(mine.data() + 60 + shift, mine.data() + 60, count);
        loop(want.data() + 60 + shift, want.data() + 60, count);
        ASSERT_EQ(mine, want) << "count " << count << " shift " << shift;
      }
    }
  }
}

// The text copies against their loops, at every alignment within a 32-byte
// block, every length and room up to four blocks and a spread beyond, with
// no two blocks of the text alike and the bytes after the NUL not NUL; and
// with each text, or the room, ending on the last byte before a page that
// cannot be read.
TEST(BytePrimitives, TextCopiesMatchTheirLoops) {
  constexpr size_t kEvery = 130, kMax = 420, kStride = 7;
  std::vector<size_t> sizes(kEvery + 1);
  std::iota(sizes.begin(), sizes.end(), 0);
  for (size_t n = kEvery + 1; n <= kMax; n += kStride) sizes.push_back(n);
  std::vector<unsigned char> src(32 + kMax + 32), mine(kMax + 8), want(kMax + 8);
  for (size_t align = 0; align < 32; ++align) {
    for (size_t length : sizes) {
      for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<unsigned char>(1 + i * 37 % 255);
      src[align + length] = 0;
      std::fill(mine.begin(), mine.end(), '#');
      want = mine;
      std::copy_n(src.begin() + align, length + 1, want.begin());
      ASSERT_EQ(strCopy(mine.data(), src.data() + align, length), mine.data() + length);
      ASSERT_EQ(mine, want) << "counted: align " << align << " length " << length;
      for (size_t room : sizes) {
        if (room == 0) continue;
        std::fill(mine.begin(), mine.end(), '#');
        want = mine;
        strCopy(mine.data(), static_cast<std::uint32_t>(room), src.data() + align);
        want[room - 1] = 0;
        std::copy_n(src.begin() + align, std::min(length + 1, room - 1), want.begin());
        ASSERT_EQ(mine, want) << "align " << align << " length " << length << " room " << room;
      }
    }
  }
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void* map = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(map, MAP_FAILED);
  auto* bytes = static_cast<unsigned char*>(map);
  ASSERT_EQ(mprotect(bytes + page, page, PROT_NONE), 0);
  unsigned char out[kMax + 1];
  for (size_t length : sizes) {
    unsigned char* text = bytes + page - length - 1;
    std::memset(text, 'b', length);
    text[length] = 0;
    for (size_t room : sizes) {
      if (room == 0) continue;
      strCopy(out, static_cast<std::uint32_t>(room), text);
      ASSERT_EQ(std::strlen(reinterpret_cast<char*>(out)), std::min(length, room - 1));
    }
  }
  // No NUL at all: the room alone keeps the copy out of the next page.
  for (size_t room : sizes) {
    if (room == 0) continue;
    unsigned char* text = bytes + page - (room - 1);
    std::memset(text, 'c', room - 1);
    strCopy(out, static_cast<std::uint32_t>(room), text);
    ASSERT_EQ(std::strlen(reinterpret_cast<char*>(out)), room - 1);
  }
  munmap(map, 2 * page);
}

TEST(BytePrimitives, CompareAndSwap) {
  const unsigned char high[] = {200}, low[] = {100};
  EXPECT_EQ(BUTMMCMP(high, low, 1), 1);
  EXPECT_EQ(BUTMMCMP(low, high, 0), 0);
  EXPECT_EQ(BUTSTCMP(u("ab\xE9"), u("abz")), 1);
  EXPECT_EQ(BUTSTCMP(u("ab"), u("abc")), -1);

  std::vector<unsigned char> a(1500), b(1500);  // three exchange blocks
  std::iota(a.begin(), a.end(), 0);
  std::iota(b.begin(), b.end(), 100);
  const auto oldA = a, oldB = b;
  BUTMMSWP(a.data(), b.data(), 1500);
  EXPECT_EQ(a, oldB);
  EXPECT_EQ(b, oldA);
}

TEST(BytePrimitives, Searches) {
  const unsigned char* text = u("a'b,c',d\xE9");
  EXPECT_EQ(BUTSTCHR(text, 0), nullptr);
  EXPECT_EQ(BUTSTCHR(text, '\''), text + 1);
  EXPECT_EQ(strFindReverse(text, '\''), text + 5);
  EXPECT_EQ(strFindReverse(text, 0xE9), text + 8);
  EXPECT_EQ(strFind(text, u("")), text);
  EXPECT_EQ(strFind(text, u(",d")), text + 6);
  EXPECT_EQ(strFind(text, u(",x")), nullptr);

  EXPECT_EQ(strFind(text, ',', '\'', '"', '`'), text + 6);
  EXPECT_EQ(strFind(u("a'b"), '\'', '\'', 0, 0), u("a'b") + 1);
  const unsigned char* doubled = u("'a'',b',c");  // a doubled quote stays inside
  EXPECT_EQ(strFind(doubled, ',', '\'', 0, 0), doubled + 7);
  EXPECT_EQ(strFind(u("`x,\"y\",`"), ',', '`', '"', 0), nullptr);
}

TEST(BytePrimitives, QuotedTexts) {
  unsigned char out[32];
  EXPECT_EQ(strCopyQuoted(out, u("it's"), '\''), out + 7);
  EXPECT_EQ(s(out), "'it''s'");
  EXPECT_EQ(strCatQuoted(out, u("x"), '"'), out + 10);
  EXPECT_EQ(s(out), "'it''s'\"x\"");
  EXPECT_EQ(strCopyQuoted(out, u(""), '"'), out + 2);
  EXPECT_EQ(s(out), "\"\"");
  strCopyQuoted(out, u("it's"), 4, 0x100 + '\'');  // not a byte: written, never doubled
  EXPECT_EQ(s(out), "'it's'");

  unsigned char inPlace[] = "'a''b'''";
  EXPECT_EQ(strCopyUnquoted(inPlace, inPlace), inPlace + 4);
  EXPECT_EQ(s(inPlace), "a'b'");
  EXPECT_EQ(strCopyUnquoted(out, u("''''")), out + 1);
  EXPECT_EQ(s(out), "'");
  strCopyUnquoted(out, u("\"a'b\""));
  EXPECT_EQ(s(out), "a'b");
  // Not well formed: nothing read past the count, nothing invented.
  EXPECT_EQ(strCopyUnquoted(out, u("'"), 1), out);
  std::vector<unsigned char> loneQuote = {'\'', 'a', '\'', '\''};
  strCopyUnquoted(out, loneQuote.data(), 4);
  EXPECT_EQ(s(out), "a");
}

}  // namespace
