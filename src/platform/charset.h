// The one character set of the library's texts: Windows-1252. Case folding
// goes through its upper-casing table; collation needs its code points.
#ifndef ZUUTL_PLATFORM_CHARSET_H
#define ZUUTL_PLATFORM_CHARSET_H

#include <array>
#include <cstdint>

namespace zu::platform {

namespace charset {

// The three lower-case letters in the 0x9A-0x9E row sit 16 above their
// capitals; y with diaeresis has its capital at 0x9F.
constexpr unsigned char kLowerSCaron = 0x9A;
constexpr unsigned char kLowerOE = 0x9C;
constexpr unsigned char kLowerZCaron = 0x9E;
constexpr unsigned char kRowShift = 0x10;
constexpr unsigned char kLowerYDiaeresis = 0xFF;
constexpr unsigned char kUpperYDiaeresis = 0x9F;
// Accented lower case: 0xE0-0xFE, 32 above the capitals, except division.
constexpr unsigned char kAccentedFirst = 0xE0;
constexpr unsigned char kAccentedLast = 0xFE;
constexpr unsigned char kDivisionSign = 0xF7;
constexpr unsigned char kCaseShift = 0x20;

constexpr std::array<unsigned char, 256> makeUpperCase() {
  std::array<unsigned char, 256> table{};
  for (int c = 0; c < 256; ++c) {
    bool lower =
        (c >= 'a' && c <= 'z') || (c >= kAccentedFirst && c <= kAccentedLast && c != kDivisionSign);
    table[c] = static_cast<unsigned char>(lower ? c - kCaseShift : c);
  }
  for (unsigned char c : {kLowerSCaron, kLowerOE, kLowerZCaron}) {
    table[c] = static_cast<unsigned char>(c - kRowShift);
  }
  table[kLowerYDiaeresis] = kUpperYDiaeresis;
  return table;
}

// 0x80-0x9F are the set's own; the undefined five keep their C1 code points,
// as the Windows conversion does. Everything else is Latin-1.
constexpr unsigned char kHighRowFirst = 0x80;
constexpr int kHighRowSize = 32;
constexpr std::uint16_t kHighRow[kHighRowSize] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 0x80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 0x88
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 0x90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 0x98
};

}  // namespace charset

inline constexpr std::array<unsigned char, 256> kUpperCase = charset::makeUpperCase();

// The upper case of one byte, as the platform folds text.
inline unsigned char upperCase(unsigned char c) { return kUpperCase[c]; }

namespace charset {
// The upper-casing table turned round: each capital back to its letter.
constexpr std::array<unsigned char, 256> makeLowerCase() {
  std::array<unsigned char, 256> table{};
  for (int c = 0; c < 256; ++c) table[c] = static_cast<unsigned char>(c);
  for (int c = 0; c < 256; ++c) {
    if (kUpperCase[c] != c) table[kUpperCase[c]] = static_cast<unsigned char>(c);
  }
  return table;
}
}  // namespace charset

inline constexpr std::array<unsigned char, 256> kLowerCase = charset::makeLowerCase();

inline unsigned char lowerCase(unsigned char c) { return kLowerCase[c]; }

// The Unicode code point of one byte.
constexpr std::uint32_t codePoint(unsigned char c) {
  return c >= charset::kHighRowFirst && c < charset::kHighRowFirst + charset::kHighRowSize
             ? charset::kHighRow[c - charset::kHighRowFirst]
             : c;
}

}  // namespace zu::platform

#endif
