// The library's collation: exact, case-folding, blank-padded and
// locale-collated comparison of texts, and the ordering of stored doubles.
// Results are -1, 0 or 1 (strCompareIntl: negative, 0 or positive); bytes
// compare as unsigned; folding is the platform's upper-casing of each byte.
#ifndef ZUUTL_STRINGS_COMPARE_H
#define ZUUTL_STRINGS_COMPARE_H

#include <cstdint>

#include "frame/api.h"

// Counted texts: the first difference decides, else the longer is greater.
ZU_API short strCompare(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                        std::uint32_t lengthB);
ZU_API short strCompareCi(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                          std::uint32_t lengthB);
ZU_API short strCompareCi(const unsigned char* a, const unsigned char* b);
// At most `maxLength` bytes, stopping after a NUL.
ZU_API short strCompareWithMaxLength(const unsigned char* a, const unsigned char* b,
                                     std::uint32_t maxLength);
// SQL fixed-width text: the shorter counts as padded with blanks.
ZU_API short strComparePad(const unsigned char* a, const unsigned char* b);
// The user's locale collation. Texts are collated over their first 511
// bytes; where that ties and one is longer, byte order decides.
ZU_API short strCompareIntl(const unsigned char* a, const unsigned char* b);
ZU_API short strCompareIntl(const unsigned char* a, std::uint32_t lengthA, const unsigned char* b,
                            std::uint32_t lengthB);
// Orders two little-endian IEEE doubles by their bytes: -0.0 below +0.0,
// NaNs by sign and bits.
ZU_API short floatCompare(const unsigned char* a, const unsigned char* b);

#endif
