#include "nodes/utility/int_bits.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace quillix {
namespace {

TEST(ByteOfInt, SplitsLeastSignificantByteFirst) {
  EXPECT_EQ(byteOfInt(0x12345678, 0), 0x78);
  EXPECT_EQ(byteOfInt(0x12345678, 1), 0x56);
  EXPECT_EQ(byteOfInt(0x12345678, 2), 0x34);
  EXPECT_EQ(byteOfInt(0x12345678, 3), 0x12);
}

TEST(ByteOfInt, NegativeValuesGiveBytesInZeroTo255) {
  const int expectedMinusTwo[] = {254, 255, 255, 255};
  for (int b = 0; b < 4; ++b) {
    EXPECT_EQ(byteOfInt(-1, b), 255);
    EXPECT_EQ(byteOfInt(-2, b), expectedMinusTwo[b]);
    EXPECT_EQ(byteOfInt(INT32_MIN, b), b == 3 ? 0x80 : 0);
  }
}

TEST(TestBit, BitNumberWrapsModulo32) {
  EXPECT_EQ(testBit(5, 0), 1);
  EXPECT_EQ(testBit(5, 1), 0);
  EXPECT_EQ(testBit(5, 2), 1);
  EXPECT_EQ(testBit(5, 34), 1);
  EXPECT_EQ(testBit(5, 32), 1);
  EXPECT_EQ(testBit(INT32_MIN, -1), 1);
  EXPECT_EQ(testBit(INT32_MAX, -1), 0);
  EXPECT_EQ(testBit(INT32_MAX, INT32_MIN), 1);  // low five bits 0: bit 0
}

}  // namespace
}  // namespace quillix
