// Decimal conversion between byte texts and numbers. One overloaded name:
// the argument types choose the direction. Numbers to text cannot fail;
// text to number is strict and refuses with ZU_ERROR, leaving the target
// as it was.
//
// Widths are the library's: the "unsigned long" and "long" forms are the
// 32-bit ones on every build, so a literal such as 42 picks the signed form.
#ifndef ZUUTL_STRINGS_CONVERT_H
#define ZUUTL_STRINGS_CONVERT_H

#include <cstdint>

#include "frame/api.h"
#include "frame/status.h"

// Decimal digits and a NUL; returns the digits written. `dst` needs 11 bytes
// and the NUL.
ZU_API unsigned short convert(unsigned char* dst, std::uint32_t value);
// A leading '-' for negative values; returns the bytes written.
ZU_API unsigned short convert(unsigned char* dst, std::int32_t value);
// A field of `width` blanks and a NUL, with the digits at its right end, or
// at its left when `leftAlign` is not 0. At most ten digit positions; a value
// too wide for the field leaves '*' in all but its last byte. Returns the
// digits written: 0 for a value of 0 (the field stays blank) and when the
// value does not fit. Each digit is taken as a 16-bit quotient, so values of
// 65536 times the field's top power of ten wrap.
ZU_API unsigned short convert(unsigned char* dst, unsigned short width, std::uint32_t value,
                              unsigned short leftAlign);

// Text to number. Leading white space and '+' signs, and trailing white
// space, are allowed; an empty or blank text is 0.
ZU_API ZuStatus convert(const unsigned char* text, std::uint32_t* value);
// A '-' may follow leading white space.
ZU_API ZuStatus convert(const unsigned char* text, std::int32_t* value);
ZU_API ZuStatus convert(const unsigned char* text, unsigned short* value);
ZU_API ZuStatus convert(const unsigned char* text, short* value);
ZU_API ZuStatus convert(const unsigned char* text, unsigned char* value);
ZU_API ZuStatus convert(const unsigned char* text, char* value);
// The first `length` bytes of `text`, up to a NUL among them.
ZU_API ZuStatus convert(const unsigned char* text, unsigned short length, unsigned short* value);

#endif
