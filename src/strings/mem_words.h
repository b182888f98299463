// The library's own copy and fill with 32-bit counts, for callers whose
// ranges never overlap upward. Not exported.
#ifndef ZUUTL_STRINGS_MEM_WORDS_H
#define ZUUTL_STRINGS_MEM_WORDS_H

#include <cstdint>
#include <cstring>

namespace zu {

// Ascending, so a destination below its source is safe too.
inline void memCopy(void* dst, const void* src, std::uint32_t count) {
  std::memmove(dst, src, count);
}

inline void memFill(void* dst, unsigned char value, std::uint32_t count) {
  std::memset(dst, value, count);
}

}  // namespace zu

#endif
