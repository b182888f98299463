// Locale-aware ordering of texts, standing in for the platform's lstrcmpA.
#ifndef ZUUTL_PLATFORM_COLLATION_H
#define ZUUTL_PLATFORM_COLLATION_H

#include <cstdint>

namespace zu::platform {

// Longest text, in bytes, that one collation looks at.
constexpr std::uint32_t kCollateMaxLength = 511;

// Orders two Windows-1252 texts as the chosen locale collates them:
// negative, 0 or positive. Each length is at most kCollateMaxLength; a NUL
// ends a text early.
int collate(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
            std::uint32_t lengthB);

// Chooses the collating locale by name, "" being the user's (from the
// environment), which is also the choice until this is called. False, and
// no change, when the locale is not installed. Not while another thread
// collates.
bool setCollationLocale(const char* name);

}  // namespace zu::platform

#endif
