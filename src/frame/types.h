// Fixed widths of the library's contract. The contract's "long" is 32 bits on
// every build, so sizes, offsets and wrap-around agree between 32 and 64 bits.
#ifndef ZUUTL_FRAME_TYPES_H
#define ZUUTL_FRAME_TYPES_H

#include <cstdint>

typedef std::uint8_t u8;
typedef std::uint16_t u16;
typedef std::uint32_t u32;
typedef std::int16_t i16;
typedef std::int32_t i32;

#endif
