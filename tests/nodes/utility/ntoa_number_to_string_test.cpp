// Quillix_ntoa through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kPrecision = 1020, kTreatAsInt = 1030, kLeadingZeros = 1040;
constexpr ULONG kResult = 2010;
using Texts = Written<std::wstring>;

Texts Text(const EvaluationRequest& request) {
  return writtenStrings(Evaluate(L"Quillix_ntoa", request, kResult));
}

EvaluationRequest NumberRequest(PortValues input, XSI::LONG precision, bool treatAsInt,
                                XSI::LONG leadingZeros) {
  return requestOf(input.count,
                   {{kInput, input},
                    {kPrecision, PortValues::Singles<XSI::LONG>({precision}).AsConstant()},
                    {kTreatAsInt, boolSingles({treatAsInt}).AsConstant()},
                    {kLeadingZeros, PortValues::Singles<XSI::LONG>({leadingZeros}).AsConstant()}});
}

TEST(NumberToStringNode, FormatsWithPrecisionOrAsPaddedInteger) {
  const PortValues values = PortValues::Singles<float>({2.5f, -2.5f, 3.14159f});
  EXPECT_EQ(Text(NumberRequest(values, 0, true, 4)), (Texts{L"0003", L"-003", L"0003"}));
  EXPECT_EQ(Text(NumberRequest(values, 0, true, 40)),
            (Texts{L"0000000000000003", L"-000000000000003", L"0000000000000003"}));
  EXPECT_EQ(Text(NumberRequest(values, 3, false, 0)), (Texts{L"2.5", L"-2.5", L"3.14"}));
  EXPECT_EQ(Text(NumberRequest(values, 0, false, 0)), (Texts{L"2.5", L"-2.5", L"3.14159"}));
}

TEST(NumberToStringNode, ArraysAreAlwaysBracketedAndAnEmptyOneEndsTheBatch) {
  const PortValues arrays = PortValues::ArraysOf<float>({{3.14159f}, {1.0f, 2.0f}, {}, {4.0f}});
  EXPECT_EQ(Text(NumberRequest(arrays, 3, false, 0)),
            (Texts{L"<3.14>", L"<1,2>", L"0", std::nullopt}));
}

TEST(NumberToStringNode, FailedPortQueryIsReportedInTheResult) {
  auto request = NumberRequest(PortValues::Singles<float>({1.0f, 2.0f}), 0, false, 0);
  request.failingPortInfo = {kInput};
  EXPECT_EQ(Text(request), (Texts{L"GetPortInfo() failed", std::nullopt}));
}

}  // namespace
}  // namespace quillix::test
