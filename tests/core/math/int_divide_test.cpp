#include "core/math/int_divide.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillix {
namespace {

TEST(DivideInt, TruncatesTowardZeroWithRemainderSignOfValue) {
  EXPECT_EQ(DivideInt(7, 2).quotient, 3);
  EXPECT_EQ(DivideInt(7, 2).remainder, 1);
  EXPECT_EQ(DivideInt(-7, 2).quotient, -3);
  EXPECT_EQ(DivideInt(-7, 2).remainder, -1);
  EXPECT_EQ(DivideInt(7, -2).quotient, -3);
  EXPECT_EQ(DivideInt(7, -2).remainder, 1);
  EXPECT_EQ(DivideInt(-7, -2).quotient, 3);
  EXPECT_EQ(DivideInt(-7, -2).remainder, -1);
}

TEST(DivideInt, ZeroDivisorAndOverflowingPairYieldDefinedValues) {
  for (std::int32_t v : {0, 1, -1, 12345, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ(DivideInt(v, 0).quotient, 0);
    EXPECT_EQ(DivideInt(v, 0).remainder, 0);
  }
  const std::int32_t minimum = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(DivideInt(minimum, -1).quotient, minimum);
  EXPECT_EQ(DivideInt(minimum, -1).remainder, 0);
  EXPECT_EQ(DivideInt(minimum, 1).quotient, minimum);
}

}  // namespace
}  // namespace quillix
