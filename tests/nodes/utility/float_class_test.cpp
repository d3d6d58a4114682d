#include "nodes/utility/float_class.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace quillix {
namespace {

using Limits = std::numeric_limits<float>;

struct Answers {
  bool nan, positiveOrNaN, positive, negative;
  bool operator==(const Answers&) const = default;
};

Answers classify(float value) {
  return {isNaNBits(value), isPositiveInfinityOrNaN(value), isPositiveInfinity(value),
          isNegativeInfinity(value)};
}

TEST(FloatClass, FiniteValuesAreNeitherNaNNorInfinite) {
  for (float value : {0.0f, -0.0f, 1.0f, -1.0f, Limits::max(), -Limits::max(), Limits::min(),
                      Limits::denorm_min(), -Limits::denorm_min()}) {
    EXPECT_EQ(classify(value), (Answers{false, false, false, false})) << value;
  }
}

TEST(FloatClass, InfinitiesAreReportedByTheirSign) {
  EXPECT_EQ(classify(Limits::infinity()), (Answers{false, true, true, false}));
  EXPECT_EQ(classify(-Limits::infinity()), (Answers{false, false, false, true}));
}

TEST(FloatClass, EveryNaNIsCaughtAndCountsAsPositiveInfinityOnlyInTheLooseTest) {
  for (std::uint32_t bits : {0x7FC00000u, 0x7F800001u, 0x7FBFFFFFu, 0xFFC00000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(classify(std::bit_cast<float>(bits)), (Answers{true, true, false, false}))
        << std::hex << bits;
  }
}

TEST(ClassifyFloats, WritesOneOrZeroPerEntry) {
  const std::vector<float> values{1.0f, Limits::infinity(), Limits::quiet_NaN(),
                                  -Limits::infinity()};
  std::vector<std::int32_t> out(values.size(), 7);
  classifyFloats(values, FloatTest::PositiveInfinity, out);
  EXPECT_EQ(out, (std::vector<std::int32_t>{0, 1, 0, 0}));
  classifyFloats(values, FloatTest::PositiveInfinityOrNaN, out);
  EXPECT_EQ(out, (std::vector<std::int32_t>{0, 1, 1, 0}));
  classifyFloats(values, FloatTest::NegativeInfinity, out);
  EXPECT_EQ(out, (std::vector<std::int32_t>{0, 0, 0, 1}));
  classifyFloats(values, FloatTest::NaN, out);
  EXPECT_EQ(out, (std::vector<std::int32_t>{0, 0, 1, 0}));
}

}  // namespace
}  // namespace quillix
