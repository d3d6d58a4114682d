// The to-string nodes through the offline host.
#include <gtest/gtest.h>

#include <limits>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kPrecision = 1020, kTreatAsInt = 1030, kLeadingZeros = 1040;
constexpr ULONG kResult = 2010;
using Texts = Written<std::wstring>;

Texts text(const wchar_t* node, const EvaluationRequest& request) {
  return writtenStrings(evaluate(node, request, kResult));
}

// A request whose group instances are `instances`, in order.
EvaluationRequest instancesOf(ULONG elements, std::vector<PortValues> instances) {
  EvaluationRequest r;
  r.elements = elements;
  for (ULONG k = 0; k < instances.size(); ++k) r.setInput(kInput, instances[k], k);
  return r;
}

TEST(ToStringNode, RendersEmptyAsZeroOneEntryBareAndMoreInBrackets) {
  const auto ints = requestOf(3, {{kInput, PortValues::arraysOf<XSI::LONG>({{3, -12}, {}, {7}})}});
  EXPECT_EQ(text(L"Quillix_itoa", ints), (Texts{L"<3,-12>", L"0", L"7"}));
  const auto floats = requestOf(3, {{kInput, PortValues::singles<float>({1e20f, 0.5f, -1.5e-7f})}});
  EXPECT_EQ(text(L"Quillix_ftoa", floats), (Texts{L"1e+020", L"0.5", L"-1.5e-007"}));
  const auto bools = requestOf(2, {{kInput, boolArrays({{true, false, true}, {false, false}})}});
  EXPECT_EQ(text(L"Quillix_btoa", bools), (Texts{L"<1,0,1>", L"<0,0>"}));
}

TEST(ToStringNode, BooleanNodeEndsItsBatchAfterAnInputOfAtMostOneEntry) {
  EXPECT_EQ(text(L"Quillix_btoa", requestOf(3, {{kInput, boolSingles({true, false, true})}})),
            (Texts{L"1", std::nullopt, std::nullopt}));
  EXPECT_EQ(text(L"Quillix_btoa",
                 requestOf(4, {{kInput, boolArrays({{true, true}, {}, {true, false}, {true}})}})),
            (Texts{L"<1,1>", L"0", std::nullopt, std::nullopt}));
  // Each batch ends on its own: the second batch starts again.
  auto request = requestOf(4, {{kInput, boolSingles({true, false, true, false})}});
  request.batchSize = 2;
  EXPECT_EQ(text(L"Quillix_btoa", request), (Texts{L"1", std::nullopt, L"1", std::nullopt}));
}

TEST(ToStringNode, VariadicNodesJoinTheirInstancesInOrder) {
  const auto bools = instancesOf(
      2, {boolSingles({false, true}), boolSingles({true, true}), boolArrays({{true, true}, {}})});
  EXPECT_EQ(text(L"Quillix_btoa2", bools), (Texts{L"0,1,<1,1>", L"1,1,0"}));
  const auto ints = instancesOf(
      1, {PortValues::arraysOf<XSI::LONG>({{1, 2}}), PortValues::singles<XSI::LONG>({-3})});
  EXPECT_EQ(text(L"Quillix_itoa2", ints), (Texts{L"<1,2>,-3"}));
  const auto floats = instancesOf(1, {PortValues::singles<float>({2.5f})});
  EXPECT_EQ(text(L"Quillix_ftoa2", floats), (Texts{L"2.5"}));
}

EvaluationRequest numberRequest(PortValues input, XSI::LONG precision, bool treatAsInt,
                                XSI::LONG leadingZeros) {
  return requestOf(input.count,
                   {{kInput, input},
                    {kPrecision, PortValues::singles<XSI::LONG>({precision}).asConstant()},
                    {kTreatAsInt, boolSingles({treatAsInt}).asConstant()},
                    {kLeadingZeros, PortValues::singles<XSI::LONG>({leadingZeros}).asConstant()}});
}

TEST(NumberToStringNode, FormatsWithPrecisionOrAsPaddedInteger) {
  const PortValues values = PortValues::singles<float>({2.5f, -2.5f, 3.14159f});
  EXPECT_EQ(text(L"Quillix_ntoa", numberRequest(values, 0, true, 4)),
            (Texts{L"0003", L"-003", L"0003"}));
  EXPECT_EQ(text(L"Quillix_ntoa", numberRequest(values, 0, true, 40)),
            (Texts{L"0000000000000003", L"-000000000000003", L"0000000000000003"}));
  EXPECT_EQ(text(L"Quillix_ntoa", numberRequest(values, 3, false, 0)),
            (Texts{L"2.5", L"-2.5", L"3.14"}));
  EXPECT_EQ(text(L"Quillix_ntoa", numberRequest(values, 0, false, 0)),
            (Texts{L"2.5", L"-2.5", L"3.14159"}));
}

TEST(NumberToStringNode, ArraysAreAlwaysBracketedAndAnEmptyOneEndsTheBatch) {
  const PortValues arrays = PortValues::arraysOf<float>({{3.14159f}, {1.0f, 2.0f}, {}, {4.0f}});
  EXPECT_EQ(text(L"Quillix_ntoa", numberRequest(arrays, 3, false, 0)),
            (Texts{L"<3.14>", L"<1,2>", L"0", std::nullopt}));
}

TEST(NumberToStringNode, FailedPortQueryIsReportedInTheResult) {
  auto request = numberRequest(PortValues::singles<float>({1.0f, 2.0f}), 0, false, 0);
  request.failingPortInfo = {kInput};
  EXPECT_EQ(text(L"Quillix_ntoa", request), (Texts{L"GetPortInfo() failed", std::nullopt}));
  EXPECT_EQ(text(L"Quillix_ftoa", request), (Texts{std::nullopt, std::nullopt}));
}

}  // namespace
}  // namespace quillix::test
