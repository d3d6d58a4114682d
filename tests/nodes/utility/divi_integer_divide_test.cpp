// Quillix_divi through the offline host: the four structure paths, constants, batches, threads.
#include <gtest/gtest.h>

#include <limits>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

constexpr ULONG kValue = 1010, kDivideBy = 1020, kResult = 2010, kRemainder = 2020;
using Ints = std::vector<XSI::LONG>;

EvaluationRequest Request(PortValues value, PortValues divisor, ULONG elements) {
  EvaluationRequest r;
  r.elements = elements;
  r.SetInput(kValue, std::move(value));
  r.SetInput(kDivideBy, std::move(divisor));
  return r;
}

Ints Singles(const OutputResult& out) {
  Ints v;
  for (ULONG i = 0; i < out.values.count; ++i) v.push_back(out.values.Single<XSI::LONG>(i));
  return v;
}

TEST(DiviNode, SingleValuesGiveTruncatedQuotientAndRemainder) {
  const auto r = Request(PortValues::Singles<XSI::LONG>({7, -7, 7, -7, 5}),
                         PortValues::Singles<XSI::LONG>({2, 2, -2, -2, 0}), 5);
  const auto results = Evaluate(L"Quillix_divi", r, {kResult, kRemainder});
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(Singles(results[0]), (Ints{3, -3, -3, 3, 0}));
  EXPECT_EQ(Singles(results[1]), (Ints{1, -1, 1, -1, 0}));
}

TEST(DiviNode, ArrayPathsFollowTheShorterOrTheArrayInput) {
  // array × array: length of the shorter.
  auto out = Evaluate(L"Quillix_divi",
                      Request(PortValues::ArraysOf<XSI::LONG>({{10, 11, 12, 13, 14}}),
                              PortValues::ArraysOf<XSI::LONG>({{3, 0, -5}}), 1),
                      kResult);
  EXPECT_EQ(out.values.ArrayAt<XSI::LONG>(0), (Ints{3, 0, -2}));
  // array × single and single × array.
  out = Evaluate(L"Quillix_divi",
                 Request(PortValues::ArraysOf<XSI::LONG>({{9, -9}, {}}),
                         PortValues::Singles<XSI::LONG>({4, 4}), 2),
                 kRemainder);
  EXPECT_EQ(out.values.ArrayAt<XSI::LONG>(0), (Ints{1, -1}));
  EXPECT_TRUE(out.values.WasWritten(1));
  EXPECT_TRUE(out.values.ArrayAt<XSI::LONG>(1).empty());
  out = Evaluate(L"Quillix_divi",
                 Request(PortValues::Singles<XSI::LONG>({100}),
                         PortValues::ArraysOf<XSI::LONG>({{3, 0, -7}}), 1),
                 kResult);
  EXPECT_EQ(out.values.ArrayAt<XSI::LONG>(0), (Ints{33, 0, -14}));
}

TEST(DiviNode, ConstantInputEqualsRepeatedValue) {
  const auto constant = Evaluate(L"Quillix_divi",
                                 Request(PortValues::Singles<XSI::LONG>({1, 2, 3, 4}),
                                         PortValues::Singles<XSI::LONG>({3}).AsConstant(), 4),
                                 kResult);
  const auto repeated = Evaluate(L"Quillix_divi",
                                 Request(PortValues::Singles<XSI::LONG>({1, 2, 3, 4}),
                                         PortValues::Singles<XSI::LONG>({3, 3, 3, 3}), 4),
                                 kResult);
  EXPECT_EQ(Singles(constant), Singles(repeated));
  const auto constantArray =
      Evaluate(L"Quillix_divi",
               Request(PortValues::ArraysOf<XSI::LONG>({{6, 7}}).AsConstant(),
                       PortValues::Singles<XSI::LONG>({2, -2}), 2),
               kResult);
  EXPECT_EQ(constantArray.values.ArrayAt<XSI::LONG>(0), (Ints{3, 3}));
  EXPECT_EQ(constantArray.values.ArrayAt<XSI::LONG>(1), (Ints{-3, -3}));
}

TEST(DiviNode, WritesOnlyTheBatchAndNothingForUnknownPortsOrFailedQueries) {
  auto r = Request(PortValues::Singles<XSI::LONG>({7, 7, 7, 7}),
                   PortValues::Singles<XSI::LONG>({2, 2, 2, 2}), 4);
  r.batch = std::vector<ULONG>{1, 3};
  auto out = Evaluate(L"Quillix_divi", r, kResult);
  EXPECT_EQ((std::vector<bool>{out.values.WasWritten(0), out.values.WasWritten(1),
                               out.values.WasWritten(2), out.values.WasWritten(3)}),
            (std::vector<bool>{false, true, false, true}));

  r.batch.reset();
  EXPECT_EQ(Evaluate(L"Quillix_divi", r, 2030).values.count, 0u);
  r.failingPortInfo = {kDivideBy};
  out = Evaluate(L"Quillix_divi", r, kResult);
  for (ULONG i = 0; i < 4; ++i) EXPECT_FALSE(out.values.WasWritten(i));
  EXPECT_EQ(out.status, 0u);
}

TEST(DiviNode, OverflowingPairDoesNotFault) {
  const auto out =
      Evaluate(L"Quillix_divi",
               Request(PortValues::Singles<XSI::LONG>({std::numeric_limits<XSI::LONG>::min()}),
                       PortValues::Singles<XSI::LONG>({-1}), 1),
               {kResult, kRemainder});
  EXPECT_EQ(Singles(out[0]), (Ints{std::numeric_limits<XSI::LONG>::min()}));
  EXPECT_EQ(Singles(out[1]), (Ints{0}));
}

TEST(DiviNode, ManyThreadsGiveTheSingleThreadedResult) {
  const ULONG n = 5000;
  Ints values(n), divisors(n);
  for (ULONG i = 0; i < n; ++i) {
    values[i] = XSI::LONG(i * 7919) - 20000000;
    divisors[i] = XSI::LONG(i % 13) - 6;
  }
  auto r = Request(PortValues::Singles(values), PortValues::Singles(divisors), n);
  r.batchSize = 64;
  r.threads = 1;
  const auto single = Evaluate(L"Quillix_divi", r, {kResult, kRemainder});
  r.threads = 4;
  const auto threaded = Evaluate(L"Quillix_divi", r, {kResult, kRemainder});
  EXPECT_EQ(Singles(single[0]), Singles(threaded[0]));
  EXPECT_EQ(Singles(single[1]), Singles(threaded[1]));
}

}  // namespace
}  // namespace quillix::test
