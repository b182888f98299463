// Small rules that the text functions share: the pad byte, the library's
// white space and the bytes that make up a word. Bytes are single-byte code
// page text; 192 to 255 count as Latin-1 letters by number.
#ifndef ZUUTL_STRINGS_TEXT_RULES_H
#define ZUUTL_STRINGS_TEXT_RULES_H

namespace zu::bytes {

// The pad byte of fixed-width text, cut from the end before LIKE.
constexpr unsigned char kBlank = ' ';

// White space: tab, LF, VT, FF, CR, and the blank.
constexpr unsigned char kFirstControlSpace = '\t';
constexpr unsigned char kLastControlSpace = '\r';
constexpr bool isWhiteSpace(unsigned char c) {
  return c == kBlank || (c >= kFirstControlSpace && c <= kLastControlSpace);
}

constexpr bool isDigit(unsigned char c) { return c >= '0' && c <= '9'; }

// The Latin-1 letters: the upper row from 192, less the multiplication and
// division signs.
constexpr unsigned char kFirstHighLetter = 192;
constexpr unsigned char kMultiplicationSign = 215;
constexpr unsigned char kDivisionSign = 247;
constexpr bool isWordStart(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
         (c >= kFirstHighLetter && c != kMultiplicationSign && c != kDivisionSign);
}
constexpr bool isWordPart(unsigned char c) { return isWordStart(c) || isDigit(c); }

// A comparison's result as the library gives it: -1, 0 or 1.
inline short threeWay(int difference) {
  return static_cast<short>((difference > 0) - (difference < 0));
}

}  // namespace zu::bytes

#endif
