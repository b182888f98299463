// Hexadecimal digits against printf, decoding against encoding, and the
// refusals of the decoder.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "strings/hex.h"

namespace {

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

TEST(Hexify, NumbersAgreeWithPrintf) {
  for (std::uint32_t v : {0u, 1u, 0xFu, 0x10u, 255u, 4096u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    for (unsigned short width : {0, 1, 2, 4, 8, 9, 40}) {
      unsigned char out[64];
      char expect[64];
      std::snprintf(expect, sizeof expect, "%0*X", width == 0 ? 1 : width, static_cast<unsigned>(v));
      EXPECT_EQ(hexify(out, v, width), std::strlen(expect)) << v << " " << width;
      EXPECT_STREQ(reinterpret_cast<char*>(out), expect);
    }
  }
}

TEST(Hexify, BytesForwardAndInPlace) {
  std::vector<unsigned char> all(256);
  for (int i = 0; i < 256; ++i) all[i] = static_cast<unsigned char>(i);
  std::string expect;
  for (unsigned char b : all) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02X", b);
    expect += pair;
  }
  std::vector<unsigned char> out(512, 'x');
  EXPECT_EQ(hexify(out.data(), all.data(), 256), 512u);
  EXPECT_EQ(std::string(out.begin(), out.end()), expect);
  std::vector<unsigned char> inPlace(512, 'x');
  std::memcpy(inPlace.data(), all.data(), 256);
  EXPECT_EQ(hexifyHuge(inPlace.data(), inPlace.data(), 256), 512u);
  EXPECT_EQ(inPlace, out);
  EXPECT_EQ(hexify(out.data(), all.data(), 0), 0u);
}

TEST(Dehexify, UndoesHexifyInEitherCase) {
  std::mt19937 random(7);
  for (int round = 0; round < 50; ++round) {
    std::vector<unsigned char> bytes(round * 3);
    for (auto& b : bytes) b = static_cast<unsigned char>(random());
    std::vector<unsigned char> text(bytes.size() * 2 + 1);
    const std::uint32_t digits = hexify(text.data(), bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    if (round % 2 == 1) {
      for (auto& c : text) c = static_cast<unsigned char>(std::tolower(c));
    }
    std::vector<unsigned char> back(bytes.size());
    EXPECT_EQ(dehexify(back.data(), text.data(), digits), ZU_OK);
    EXPECT_EQ(back, bytes);
    EXPECT_EQ(dehexifyHuge(text.data(), text.data(), digits), ZU_OK);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), text.begin()));
  }
}

TEST(Dehexify, OddCountLeavesAHighNibble) {
  unsigned char out[2] = {0xEE, 0xEE};
  EXPECT_EQ(dehexify(out, u("ABC"), 3), ZU_OK);
  EXPECT_EQ(out[0], 0xAB);
  EXPECT_EQ(out[1], 0xC0);
}

TEST(Dehexify, RefusesAnyOtherByteAtAnyPlace) {
  for (int bad = 0; bad < 256; ++bad) {
    if (std::isxdigit(bad)) continue;
    for (int at = 0; at < 4; ++at) {
      unsigned char text[4] = {'1', '2', '3', '4'};
      text[at] = static_cast<unsigned char>(bad);
      unsigned char out[2] = {0, 0};
      EXPECT_EQ(dehexify(out, text, 4), ZU_ERROR) << bad << " at " << at;
      // The whole bytes before the bad digit are already converted.
      if (at >= 2) {
        EXPECT_EQ(out[0], 0x12);
      }
    }
  }
}

TEST(HexTests, IsHexStringMatchesCType) {
  EXPECT_EQ(isHexString(u(""), 0), 1);
  for (int c = 0; c < 256; ++c) {
    const unsigned char text[2] = {'a', static_cast<unsigned char>(c)};
    EXPECT_EQ(isHexString(text, 2), std::isxdigit(c) ? 1 : 0) << c;
    EXPECT_EQ(isHexString(text, 1), 1);
  }
}

TEST(HexTests, TruthLooksOnlyAtTheStart) {
  for (const char* yes : {"1", "1000", "t", "TRUE", "Tomorrow", "on", "ON", "oN", "onward"}) {
    EXPECT_EQ(isTrueStr(u(yes)), 1) << yes;
  }
  for (const char* no : {"", "0", "o", "O", "off", "yes", "FALSE", " 1", "2"}) {
    EXPECT_EQ(isTrueStr(u(no)), 0) << no;
  }
}

}  // namespace
