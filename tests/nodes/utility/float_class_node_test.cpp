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
const float kSignallingNaN = std::bit_cast<float>(0x7F800001u);
const Floats kSamples{0.0f,
                      std::numeric_limits<float>::max(),
                      std::numeric_limits<float>::denorm_min(),
                      kInf,
                      -kInf,
                      kQuietNaN,
                      kSignallingNaN};

TEST(FloatClassNode, BooleanNodeReportsANaNAlsoAsPositiveInfinity) {
  const auto out = evaluate(L"Quillix_nan", requestOf(7, {{kInput, PortValues::singles(kSamples)}}),
                            {kIsNaN, kPositiveInf, kNegativeInf});
  ASSERT_EQ(out.size(), 3u);
  using Bools = Written<bool>;
  EXPECT_EQ(writtenSingles<bool>(out[0]), (Bools{false, false, false, false, false, true, true}));
  EXPECT_EQ(writtenSingles<bool>(out[1]), (Bools{false, false, false, true, false, true, true}));
  EXPECT_EQ(writtenSingles<bool>(out[2]), (Bools{false, false, false, false, true, false, false}));
}

TEST(FloatClassNode, IntegerNodeReportsANaNOnlyAsNaN) {
  const auto out =
      evaluate(L"Quillix_nan2", requestOf(7, {{kInput, PortValues::singles(kSamples)}}),
               {kIsNaN, kPositiveInf, kNegativeInf});
  ASSERT_EQ(out.size(), 3u);
  using Flags = Written<XSI::LONG>;
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[0]), (Flags{0, 0, 0, 0, 0, 1, 1}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[1]), (Flags{0, 0, 0, 1, 0, 0, 0}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[2]), (Flags{0, 0, 0, 0, 1, 0, 0}));
}

TEST(FloatClassNode, IntegerNodeClassifiesArraysEntryByEntry) {
  const auto request =
      requestOf(2, {{kInput, PortValues::arraysOf<float>({{1.0f, kQuietNaN, -kInf}, {}})}});
  EXPECT_EQ(writtenArrays<XSI::LONG>(evaluate(L"Quillix_nan2", request, kIsNaN)),
            (Written<Ints>{Ints{0, 1, 0}, Ints{}}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(evaluate(L"Quillix_nan2", request, kNegativeInf)),
            (Written<Ints>{Ints{0, 0, 1}, Ints{}}));
}

TEST(FloatClassNode, ConstantBatchAndUnknownPort) {
  auto request = requestOf(3, {{kInput, PortValues::singles<float>({kInf}).asConstant()}});
  request.batch = std::vector<ULONG>{1};
  EXPECT_EQ(writtenSingles<bool>(evaluate(L"Quillix_nan", request, kPositiveInf)),
            (Written<bool>{std::nullopt, true, std::nullopt}));
  EXPECT_EQ(evaluate(L"Quillix_nan2", request, 2040).values.count, 0u);
}

TEST(FloatClassNode, ManyThreadsGiveTheSingleThreadedResult) {
  const ULONG n = 4000;
  Floats values(n);
  for (ULONG i = 0; i < n; ++i) values[i] = kSamples[i % kSamples.size()] * float(i % 3);
  auto request = requestOf(n, {{kInput, PortValues::singles(values)}});
  request.batchSize = 50;
  for (ULONG port : {kIsNaN, kPositiveInf, kNegativeInf}) {
    request.threads = 1;
    const auto single = writtenSingles<XSI::LONG>(evaluate(L"Quillix_nan2", request, port));
    const auto singleBool = writtenSingles<bool>(evaluate(L"Quillix_nan", request, port));
    request.threads = 4;
    EXPECT_EQ(writtenSingles<XSI::LONG>(evaluate(L"Quillix_nan2", request, port)), single);
    EXPECT_EQ(writtenSingles<bool>(evaluate(L"Quillix_nan", request, port)), singleBool);
  }
}

}  // namespace
}  // namespace quillix::test
