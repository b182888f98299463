// The page geometry of the scratch store, shared with what lays data out
// inside its pages.
#ifndef ZUUTL_STORAGE_TMP_PAGES_H
#define ZUUTL_STORAGE_TMP_PAGES_H

#include <cstdint>

namespace zu::storage {

inline constexpr unsigned kPageShift = 11;
inline constexpr std::uint32_t kPageSize = 1u << kPageShift;  // 2048
inline constexpr std::uint32_t kPageMask = kPageSize - 1;
// A set is two pages, way A then way B.
inline constexpr unsigned kSetShift = 12;
inline constexpr std::uint32_t kSetSize = 1u << kSetShift;
inline constexpr unsigned short kDefaultCacheSize = 8192;
// Pages of the first file (32 MiB); the rest go to the second.
inline constexpr std::uint32_t kFirstFilePages = 0x4000;
// A free extent below this is not kept.
inline constexpr std::uint32_t kSmallestFreeExtent = 256;
inline constexpr std::uint32_t kNameRoom = 256;
inline constexpr std::uint32_t kHugeChunk = 65536;
// As a size: everything from the offset up.
inline constexpr std::uint32_t kAllTheRest = 0xFFFFFFFF;

}  // namespace zu::storage

#endif
