// Quillix_nan and Quillix_nan2 through the offline host.
#include <gtest/gtest.h>

#include <bit>
#include <limits>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kIsNaN = 2010, kPositiveInf = 2020, kNegativeInf = 2030;
const float kInf = std::numeric_limits<float>::infinity();
const float kQuietNaN = std::numeric_limits<float>::quiet_NaN();

// -0, the largest finite float, the smallest denormal, +inf, -inf, then a quiet, a signalling
// and a negative NaN.
const Floats kSamples{-0.0f,
                      std::numeric_limits<float>::max(),
                      std::numeric_limits<float>::denorm_min(),
                      kInf,
                      -kInf,
                      kQuietNaN,
                      std::bit_cast<float>(0x7F800001u),
                      std::bit_cast<float>(0xFFC00000u)};

std::vector<OutputResult> classify(const wchar_t* node) {
  return evaluate(node, requestOf(8, {{kInput, PortValues::singles(kSamples)}}),
                  {kIsNaN, kPositiveInf, kNegativeInf});
}

TEST(FloatClassNode, BooleanNodeReportsANaNAlsoAsPositiveInfinity) {
  const auto out = classify(L"Quillix_nan");
  ASSERT_EQ(out.size(), 3u);
  using Bools = Written<bool>;
  EXPECT_EQ(writtenSingles<bool>(out[0]), (Bools{0, 0, 0, 0, 0, 1, 1, 1}));
  EXPECT_EQ(writtenSingles<bool>(out[1]), (Bools{0, 0, 0, 1, 0, 1, 1, 1}));
  EXPECT_EQ(writtenSingles<bool>(out[2]), (Bools{0, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(FloatClassNode, IntegerNodeReportsANaNOnlyAsNaN) {
  const auto out = classify(L"Quillix_nan2");
  ASSERT_EQ(out.size(), 3u);
  using Flags = Written<XSI::LONG>;
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[0]), (Flags{0, 0, 0, 0, 0, 1, 1, 1}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[1]), (Flags{0, 0, 0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[2]), (Flags{0, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(FloatClassNode, IntegerNodeClassifiesArraysEntryByEntry) {
  const auto request =
      requestOf(2, {{kInput, PortValues::arraysOf<float>({{1.0f, kQuietNaN, -kInf}, {}})}});
  EXPECT_EQ(writtenArrays<XSI::LONG>(evaluate(L"Quillix_nan2", request, kIsNaN)),
            (Written<Ints>{Ints{0, 1, 0}, Ints{}}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(evaluate(L"Quillix_nan2", request, kNegativeInf)),
            (Written<Ints>{Ints{0, 0, 1}, Ints{}}));
}

}  // namespace
}  // namespace quillix::test
