#include "core/array/array_order.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace quillix {
namespace {

template <typename T>
std::vector<T> Reversed(const std::vector<T>& input) {
  std::vector<T> out(input.size());
  ReverseArray<T>(input, out);
  return out;
}

template <typename T>
std::vector<T> Shifted(const std::vector<T>& input, std::int32_t shift) {
  std::vector<T> out(input.size());
  ShiftArray<T>(input, shift, out);
  return out;
}

const std::vector<std::wstring> kAbcd{L"a", L"b", L"c", L"d"};

TEST(ReverseArray, ReversesAnyLength) {
  EXPECT_EQ(Reversed<int>({}), std::vector<int>{});
  EXPECT_EQ(Reversed<int>({7}), std::vector<int>{7});
  EXPECT_EQ(Reversed(kAbcd), (std::vector<std::wstring>{L"d", L"c", L"b", L"a"}));
}

TEST(ShiftArray, PositiveShiftMovesTowardHigherIndicesWithWrapAround) {
  EXPECT_EQ(Shifted(kAbcd, 1), (std::vector<std::wstring>{L"d", L"a", L"b", L"c"}));
  EXPECT_EQ(Shifted(kAbcd, -1), (std::vector<std::wstring>{L"b", L"c", L"d", L"a"}));
  EXPECT_EQ(Shifted(kAbcd, 5), Shifted(kAbcd, 1));
  EXPECT_EQ(Shifted(kAbcd, 9), Shifted(kAbcd, 1));
  EXPECT_EQ(Shifted(kAbcd, -9), Shifted(kAbcd, -1));
  EXPECT_EQ(Shifted(kAbcd, 0), kAbcd);
  EXPECT_EQ(Shifted(kAbcd, 4), kAbcd);
  EXPECT_EQ(Shifted(kAbcd, -400), kAbcd);
}

TEST(ShiftArray, MatchesARotationForEveryShiftExceptTheMinimum) {
  const std::vector<int> input{10, 11, 12, 13, 14, 15, 16};
  const auto n = static_cast<std::int64_t>(input.size());
  const std::int32_t big = std::numeric_limits<std::int32_t>::max();
  for (std::int32_t shift :
       {-big, -big + 1, -15, -8, -7, -6, -1, 0, 1, 6, 7, 8, 15, big - 1, big}) {
    const std::vector<int> result = Shifted(input, shift);
    for (std::int64_t j = 0; j < n; ++j) {
      const std::int64_t target = ((j + shift) % n + n) % n;
      EXPECT_EQ(result[target], input[j]) << "shift " << shift << ", entry " << j;
    }
  }
}

TEST(ShiftArray, MinimumShiftMovesTowardLowerIndices) {
  const std::int32_t minimum = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(RotationOffset(minimum, 3), 1u);
  EXPECT_EQ(Shifted<int>({1, 2, 3}, minimum), (std::vector<int>{2, 3, 1}));
}

TEST(ShiftArray, EmptyAndSingleEntryArraysAreReturnedAsTheyAre) {
  for (std::int32_t shift : {0, 1, -1, 9, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_TRUE(Shifted<int>({}, shift).empty());
    EXPECT_EQ(Shifted<int>({42}, shift), std::vector<int>{42});
  }
}

}  // namespace
}  // namespace quillix
