#include "nodes/utility/int_divide.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace quillix {
namespace {

TEST(DivideInt, TruncatesTowardZeroWithRemainderSignOfValue) {
  EXPECT_EQ(divideInt(7, 2).quotient, 3);
  EXPECT_EQ(divideInt(7, 2).remainder, 1);
  EXPECT_EQ(divideInt(-7, 2).quotient, -3);
  EXPECT_EQ(divideInt(-7, 2).remainder, -1);
  EXPECT_EQ(divideInt(7, -2).quotient, -3);
  EXPECT_EQ(divideInt(7, -2).remainder, 1);
  EXPECT_EQ(divideInt(-7, -2).quotient, 3);
  EXPECT_EQ(divideInt(-7, -2).remainder, -1);
}

TEST(DivideInt, ZeroDivisorAndOverflowingPairYieldDefinedValues) {
  for (std::int32_t v : {0, 1, -1, 12345, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ(divideInt(v, 0).quotient, 0);
    EXPECT_EQ(divideInt(v, 0).remainder, 0);
  }
  const std::int32_t minimum = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(divideInt(minimum, -1).quotient, minimum);
  EXPECT_EQ(divideInt(minimum, -1).remainder, 0);
  EXPECT_EQ(divideInt(minimum, 1).quotient, minimum);
}

TEST(DivideArrays, UsesTheShorterLength) {
  const std::vector<std::int32_t> values{10, 11, 12, 13, 14};
  const std::vector<std::int32_t> divisors{3, 0, -5};
  std::vector<std::int32_t> out(3, 99);
  divideArrays(values, divisors, DivisionPart::Remainder, out);
  EXPECT_EQ(out, (std::vector<std::int32_t>{1, 0, 2}));
  divideArrays(values, divisors, DivisionPart::Quotient, out);
  EXPECT_EQ(out, (std::vector<std::int32_t>{3, 0, -2}));
}

}  // namespace
}  // namespace quillix
