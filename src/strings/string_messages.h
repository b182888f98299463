// Catalogue rows that number conversion, hexadecimal decoding and string
// growth raise when they refuse. Internal: clients see the numbers through
// the error list.
#ifndef ZUUTL_STRINGS_STRING_MESSAGES_H
#define ZUUTL_STRINGS_STRING_MESSAGES_H

namespace zu::msg {

// "Number too large: %s1"
inline constexpr unsigned short kNumberTooLarge = 2701;
// "Number contains an invalid character: %s1"
inline constexpr unsigned short kNumberInvalid = 2702;
// "Invalid hexidecimal character found during conversion."
inline constexpr unsigned short kHexInvalid = 2708;
// "Cannot handle strings larger than 65500 bytes."
inline constexpr unsigned short kStringTooLarge = 2716;

}  // namespace zu::msg

#endif
