// What the hex fuzz target does not check: the exact digits of a number
// beside printf, and what a refused decoding has already written.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "strings/hex.h"

namespace {

TEST(Hexify, NumbersAgreeWithPrintf) {
  for (std::uint32_t v : {0u, 1u, 0xFu, 0x10u, 255u, 4096u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    for (unsigned short width : {0, 1, 2, 4, 8, 9, 40}) {
      unsigned char out[64];
      char expect[64];
      std::snprintf(expect, sizeof expect, "%0*X", width == 0 ? 1 : width, static_cast<unsigned>(v));
      EXPECT_EQ(hexify(out, v, width), std::strlen(expect)) << v << " " << width;
      EXPECT_STREQ(reinterpret_cast<char*>(out), expect);
    }
  }
}

TEST(Dehexify, WholeBytesBeforeABadDigitAreConverted) {
  for (int at = 0; at < 4; ++at) {
    unsigned char text[4] = {'1', '2', '3', '4'};
    text[at] = 'g';
    unsigned char out[2] = {0, 0};
    EXPECT_EQ(dehexify(out, text, 4), ZU_ERROR) << at;
    if (at >= 2) {
      EXPECT_EQ(out[0], 0x12) << at;
    }
  }
}

}  // namespace
