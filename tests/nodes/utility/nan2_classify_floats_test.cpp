// Quillix_nan2 through the offline host.
#include <gtest/gtest.h>

#include <limits>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kIsNaN = 2010, kPositiveInf = 2020, kNegativeInf = 2030;

TEST(FloatClassNode, IntegerNodeReportsANaNOnlyAsNaN) {
  const auto out =
      Evaluate(L"Quillix_nan2", requestOf(8, {{kInput, PortValues::Singles(floatClassSamples())}}),
               {kIsNaN, kPositiveInf, kNegativeInf});
  ASSERT_EQ(out.size(), 3u);
  using Flags = Written<XSI::LONG>;
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[0]), (Flags{0, 0, 0, 0, 0, 1, 1, 1}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[1]), (Flags{0, 0, 0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[2]), (Flags{0, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(FloatClassNode, IntegerNodeClassifiesArraysEntryByEntry) {
  const float inf = std::numeric_limits<float>::infinity();
  const auto request =
      requestOf(2, {{kInput, PortValues::ArraysOf<float>(
                                 {{1.0f, std::numeric_limits<float>::quiet_NaN(), -inf}, {}})}});
  EXPECT_EQ(writtenArrays<XSI::LONG>(Evaluate(L"Quillix_nan2", request, kIsNaN)),
            (Written<Ints>{Ints{0, 1, 0}, Ints{}}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(Evaluate(L"Quillix_nan2", request, kNegativeInf)),
            (Written<Ints>{Ints{0, 0, 1}, Ints{}}));
}

}  // namespace
}  // namespace quillix::test
