// The library's one wildcard matcher: SQL LIKE and DOS file patterns are
// both this match with their own wildcard bytes.
#ifndef ZUUTL_PLATFORM_WILDCARD_H
#define ZUUTL_PLATFORM_WILDCARD_H

#include <cstdint>

namespace zu::platform {

struct Wildcards {
  unsigned char anyMany;  // matches any run of bytes, the empty one too
  unsigned char anyOne;   // matches exactly one byte
  unsigned char escape;   // makes the next pattern byte a literal
  bool exactCase;         // else bytes match when they upper-case alike
};

// Whether all of `text` matches all of `pattern`.
bool wildcardMatch(const unsigned char* text, std::uint32_t textLength, const unsigned char* pattern,
                   std::uint32_t patternLength, const Wildcards& wildcards);

}  // namespace zu::platform

#endif
