#include "core/curve/counted_array.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

namespace quillix {
namespace {

TEST(CountedArray, GrowsKeepingItsValuesAndCountsItsBlockInTheContext) {
  QRVMemoryContext memory;
  {
    CountedArray<std::int32_t> values(&memory);
    for (std::int32_t i = 0; i < 1000; ++i) ASSERT_TRUE(values.PushBack(i));
    ASSERT_EQ(values.Size(), 1000u);
    for (std::int32_t i = 0; i < 1000; ++i) EXPECT_EQ(values[std::size_t(i)], i);
    EXPECT_GE(memory.BytesInUse(), std::int64_t(1000 * sizeof(std::int32_t)));

    CountedArray<std::int32_t> moved(std::move(values));
    EXPECT_TRUE(values.Empty());
    EXPECT_EQ(moved.Size(), 1000u);
    EXPECT_EQ(moved.Span().back(), 999);
  }
  EXPECT_EQ(memory.BytesInUse(), 0);
}

TEST(CountedArray, RefusedGrowthLeavesTheArrayAsItWas) {
  QRVMemoryContext memory;
  memory.SetLimit(true, 256);
  CountedArray<std::int32_t> values(&memory);
  ASSERT_TRUE(values.Resize(4));
  for (std::size_t i = 0; i < 4; ++i) values[i] = std::int32_t(i * 10);
  EXPECT_FALSE(values.Reserve(1000));
  EXPECT_FALSE(values.Grow(SIZE_MAX));
  ASSERT_EQ(values.Size(), 4u);
  EXPECT_EQ(values[3], 30);
  EXPECT_EQ(values.Context(), &memory);
}

}  // namespace
}  // namespace quillix
