#include "core/array/running_ids.h"

#include <gtest/gtest.h>

#include <vector>

namespace quillix {
namespace {

// The numbering itself is checked through the node; here only what no graph can reach.
TEST(RunningIds, CounterWrapsLikeATwosComplementRegister) {
  std::vector<std::int32_t> ids(2);
  EXPECT_EQ(WriteRunningIds(INT32_MAX, ids), INT32_MIN + 1);
  EXPECT_EQ(ids, (std::vector<std::int32_t>{INT32_MAX, INT32_MIN}));
  EXPECT_EQ(IdCountForSize(INT32_MIN), 0u);
}

}  // namespace
}  // namespace quillix
