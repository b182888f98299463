// Catalogue rows and fixed sizes of the containers. Internal: clients see
// the limit through its error number.
#ifndef ZUUTL_CONTAINERS_CONTAINER_MESSAGES_H
#define ZUUTL_CONTAINERS_CONTAINER_MESSAGES_H

#include <cstdint>

namespace zu {

namespace msg {
// "Can not increase internal array size past 16000."
inline constexpr unsigned short kArrayTooLarge = 2722;
}  // namespace msg

// Entries an array may reach by growing; 16000 four-byte items fill one
// 64 KiB block on the 32-bit build.
inline constexpr std::uint32_t kArrayLimit = 16000;
// Step of automatic growth, a divisor of the limit.
inline constexpr unsigned short kArrayGrowStep = 16;

// Hash tables: filled to this percentage of their slots, and at a rehash the
// fill limit grows by the second.
inline constexpr unsigned short kSetLoadPercent = 75;
inline constexpr unsigned short kSetGrowPercent = 25;
// Multiplier of the hash, 2^32 divided by the golden ratio.
inline constexpr std::uint32_t kSetHashMultiplier = 0x9E3779B9u;

// Records the array limit's error on the calling thread's list.
void refuseArrayGrowth();

}  // namespace zu

#endif
