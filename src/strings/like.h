// SQL LIKE on byte texts, with the wildcards and the escape as arguments.
// Trailing blanks of text and pattern do not count. 1 for a match, else 0.
#ifndef ZUUTL_STRINGS_LIKE_H
#define ZUUTL_STRINGS_LIKE_H

#include <cstdint>

#include "frame/api.h"

// `anyMany` matches any run of bytes (SQL %), `anyOne` one byte (SQL _),
// `escape` makes the next pattern byte literal; an escape byte equal to a
// wildcard is that wildcard. `exactCase` 0 compares folded bytes.
ZU_API unsigned int strLike(const unsigned char* text, std::uint32_t textLength,
                            const unsigned char* pattern, std::uint32_t patternLength,
                            unsigned char anyMany, unsigned char anyOne, unsigned char escape,
                            std::uint32_t exactCase);
// NUL-terminated texts, measured in 16 bits.
ZU_API unsigned int strLike(const unsigned char* text, const unsigned char* pattern,
                            unsigned char anyMany, unsigned char anyOne, unsigned char escape,
                            std::uint32_t exactCase);

#endif
