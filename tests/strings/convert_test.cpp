// Decimal conversion beside the C library and at every range boundary of
// the six targets; arbitrary texts are the convert fuzz target's.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "strings/convert.h"

namespace {

const unsigned char* u(const char* text) { return reinterpret_cast<const unsigned char*>(text); }
std::string s(const unsigned char* text) { return reinterpret_cast<const char*>(text); }

constexpr std::uint32_t kProbes[] = {0u,     1u,         9u,          10u,        99u,
                                     65535u, 65536u,     999999999u,  1000000000u, 2147483647u,
                                     2147483648u, 4294967294u, 4294967295u};

TEST(ConvertToText, AgreesWithPrintf) {
  for (std::uint32_t v : kProbes) {
    unsigned char out[16];
    char expect[16];
    std::snprintf(expect, sizeof expect, "%u", static_cast<unsigned>(v));
    EXPECT_EQ(convert(out, v), std::strlen(expect));
    EXPECT_EQ(s(out), expect);
    const auto signedValue = static_cast<std::int32_t>(v);
    std::snprintf(expect, sizeof expect, "%d", static_cast<int>(signedValue));
    EXPECT_EQ(convert(out, signedValue), std::strlen(expect));
    EXPECT_EQ(s(out), expect);
  }
}

// The field against its rules is the convert fuzz target's model; here,
// the ends of it that the model leaves out.
TEST(ConvertToText, FixedWidthFieldWraps) {
  unsigned char out[4] = {'x', 'x'};
  EXPECT_EQ(convert(out, 0, 5u, 0), 0);
  EXPECT_EQ(out[0], 0);
  // A one-digit field given 65536 sees a quotient of 0.
  EXPECT_EQ(convert(out, 1, 65536u, 0), 0);
  EXPECT_EQ(s(out), " ");
}

template <typename T>
void expectRefused(const char* text) {
  T target = 42;
  EXPECT_EQ(convert(u(text), &target), ZU_ERROR) << '"' << text << '"';
  EXPECT_EQ(target, 42) << "target written on refusal of \"" << text << '"';
}

template <typename T>
void expectValue(const char* text, long long want) {
  T target = 42;
  EXPECT_EQ(convert(u(text), &target), ZU_OK) << '"' << text << '"';
  EXPECT_EQ(static_cast<long long>(target), want) << '"' << text << '"';
}

template <typename T>
void expectRangeEdges(long long lowest, long long highest) {
  for (long long v : {lowest, highest, (lowest + highest) / 2}) {
    expectValue<T>(std::to_string(v).c_str(), v);
  }
  expectRefused<T>(std::to_string(highest + 1).c_str());
  if (lowest < 0) expectRefused<T>(std::to_string(lowest - 1).c_str());
  expectValue<T>("", 0);
  expectValue<T>(" \t\r\n ", 0);
  expectRefused<T>("12a");
  expectRefused<T>("99999999999999999999");
}

TEST(ConvertFromText, RangeOfEachTarget) {
  expectRangeEdges<std::uint32_t>(0, 4294967295LL);
  expectRangeEdges<std::int32_t>(INT32_MIN, INT32_MAX);
  expectRangeEdges<unsigned short>(0, 65535);
  expectRangeEdges<short>(-32768, 32767);
  expectRangeEdges<unsigned char>(0, 255);
  expectRangeEdges<char>(-128, 127);
}

TEST(ConvertFromText, SignsBlanksAndInvalidBytes) {
  expectValue<std::uint32_t>("  12  ", 12);
  expectValue<std::uint32_t>("+ +5", 5);
  expectValue<std::uint32_t>("0000000000004294967295", 4294967295LL);
  expectRefused<std::uint32_t>("42949672950");
  expectRefused<std::uint32_t>("1 2");
  expectRefused<std::uint32_t>("-1");
  expectRefused<unsigned char>("-1");
  expectRefused<std::uint32_t>("1\x80");
  expectValue<std::int32_t>("+7", 7);
  expectValue<std::int32_t>("- 5", -5);
  expectValue<std::int32_t>("-+5", -5);
  expectValue<std::int32_t>("-", 0);
  expectRefused<std::int32_t>("--5");
  expectRefused<std::int32_t>("5-");
}

TEST(ConvertFromText, CountedTextReadsOnlyItsCount) {
  unsigned short value = 1;
  EXPECT_EQ(convert(u("123456"), 3, &value), ZU_OK);
  EXPECT_EQ(value, 123);
  EXPECT_EQ(convert(u("12\0" "99"), 5, &value), ZU_OK);
  EXPECT_EQ(value, 12);
  EXPECT_EQ(convert(u("7x"), 0, &value), ZU_OK);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(convert(u("65536"), 5, &value), ZU_ERROR);
  EXPECT_EQ(value, 0);
  // Longer than any scratch buffer would be: leading zeros are still a number.
  const std::string padded = std::string(200, '0') + "65535";
  EXPECT_EQ(convert(u(padded.c_str()), static_cast<unsigned short>(padded.size()), &value), ZU_OK);
  EXPECT_EQ(value, 65535);
}

}  // namespace
