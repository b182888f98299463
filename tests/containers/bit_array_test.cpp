// Where each bit lives, the spare byte, and clearing.
#include <gtest/gtest.h>

#include "containers/bit_array.h"
#include "memory/ram.h"

TEST(BitArray, BitsLowestFirstWithASpareByte) {
  ZuBitArray b;
  EXPECT_EQ(b.bits, nullptr);
  ASSERT_EQ(b.initialize(8), ZU_OK);
  EXPECT_EQ(ramSize(b.bits), 2u);
  b.set(7);
  b.set(8);
  EXPECT_EQ(b.bits[0], 0x80);
  EXPECT_EQ(b.bits[1], 0x01);
  EXPECT_EQ(b.test(7), 1u);
  EXPECT_EQ(b.test(6), 0u);
  b.clear();
  for (std::uint32_t i = 0; i < 16; ++i) EXPECT_EQ(b.test(i), 0u) << i;

  ASSERT_EQ(b.initialize(13), ZU_OK);  // again: the first storage is given back
  EXPECT_EQ(ramSize(b.bits), 2u);
  EXPECT_EQ(b.bitCount, 13u);
}
