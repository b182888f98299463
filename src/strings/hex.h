// Bytes to hexadecimal text and back, and two small tests on texts.
#ifndef ZUUTL_STRINGS_HEX_H
#define ZUUTL_STRINGS_HEX_H

#include <cstdint>

#include "frame/api.h"
#include "frame/status.h"

// Upper-case hex digits of `value` and a NUL, no prefix; at least `width`
// digits (leading zeros), never fewer than the value needs, and one '0' for
// 0. `dst` needs the larger of 8 and `width`, plus the NUL. Returns the
// digits written.
ZU_API std::uint32_t hexify(unsigned char* dst, std::uint32_t value, unsigned short width);
// Two upper-case digits per byte, high nibble first; no NUL. `dst` may be
// `src` (the conversion then runs from the end), but must not overlap it in
// any other way. Returns 2 * count.
ZU_API std::uint32_t hexify(unsigned char* dst, const unsigned char* src, std::uint32_t count);
ZU_API std::uint32_t hexifyHuge(unsigned char* dst, const unsigned char* src, std::uint32_t count);
// `count` hex digits of either case to bytes, high nibble first; an odd
// count leaves the last nibble in a high half. `dst` may be `src`. A byte
// that is no hex digit refuses with ZU_ERROR, the bytes before it already
// converted.
ZU_API ZuStatus dehexify(unsigned char* dst, const unsigned char* src, std::uint32_t count);
ZU_API ZuStatus dehexifyHuge(unsigned char* dst, const unsigned char* src, std::uint32_t count);
// 1 when all `count` bytes are hex digits of either case (so for 0 bytes).
ZU_API unsigned short isHexString(const unsigned char* text, std::uint32_t count);
// 1 for a text that starts with '1', 'T' or 't', or with "ON" in any case.
ZU_API unsigned short isTrueStr(const unsigned char* text);

#endif
