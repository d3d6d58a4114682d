// Quillix_nan through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kIsNaN = 2010, kPositiveInf = 2020, kNegativeInf = 2030;

TEST(FloatClassNode, BooleanNodeReportsANaNAlsoAsPositiveInfinity) {
  const auto out =
      Evaluate(L"Quillix_nan", requestOf(8, {{kInput, PortValues::Singles(floatClassSamples())}}),
               {kIsNaN, kPositiveInf, kNegativeInf});
  ASSERT_EQ(out.size(), 3u);
  using Bools = Written<bool>;
  EXPECT_EQ(writtenSingles<bool>(out[0]), (Bools{0, 0, 0, 0, 0, 1, 1, 1}));
  EXPECT_EQ(writtenSingles<bool>(out[1]), (Bools{0, 0, 0, 1, 0, 1, 1, 1}));
  EXPECT_EQ(writtenSingles<bool>(out[2]), (Bools{0, 0, 0, 0, 1, 0, 0, 0}));
}

}  // namespace
}  // namespace quillix::test
