// Small rules that the text functions share.
#ifndef ZUUTL_STRINGS_TEXT_RULES_H
#define ZUUTL_STRINGS_TEXT_RULES_H

namespace zu::bytes {

// The pad byte of fixed-width text, cut from the end before LIKE.
constexpr unsigned char kBlank = ' ';

// A comparison's result as the library gives it: -1, 0 or 1.
inline short threeWay(int difference) {
  return static_cast<short>((difference > 0) - (difference < 0));
}

}  // namespace zu::bytes

#endif
