#include "nodes/utility/running_ids.h"

#include <gtest/gtest.h>

#include <vector>

namespace quillix {
namespace {

// Numbers points of the given sizes one after the other, as the node does.
std::vector<std::vector<std::int32_t>> number(const std::vector<std::int32_t>& sizes) {
  std::vector<std::vector<std::int32_t>> arrays;
  std::int32_t next = 0;
  for (std::int32_t size : sizes) {
    arrays.emplace_back(idCountForSize(size));
    next = writeRunningIds(next, arrays.back());
  }
  return arrays;
}

using Arrays = std::vector<std::vector<std::int32_t>>;

TEST(RunningIds, NumbersAllEntriesConsecutivelyInPointOrder) {
  EXPECT_EQ(number({2, 0, 3}), (Arrays{{0, 1}, {}, {2, 3, 4}}));
  EXPECT_EQ(number({2, 2, 2}), (Arrays{{0, 1}, {2, 3}, {4, 5}}));
  EXPECT_EQ(number({0, 0}), (Arrays{{}, {}}));
}

TEST(RunningIds, NegativeSizeGivesAnEmptyArrayAndKeepsTheCounter) {
  EXPECT_EQ(idCountForSize(-5), 0u);
  EXPECT_EQ(idCountForSize(INT32_MIN), 0u);
  EXPECT_EQ(number({1, -3, 1}), (Arrays{{0}, {}, {1}}));
}

TEST(RunningIds, CounterWrapsLikeATwosComplementRegister) {
  std::vector<std::int32_t> ids(2);
  EXPECT_EQ(writeRunningIds(INT32_MAX, ids), INT32_MIN + 1);
  EXPECT_EQ(ids, (std::vector<std::int32_t>{INT32_MAX, INT32_MIN}));
}

}  // namespace
}  // namespace quillix
