// Quillix_btoa through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kResult = 2010;
using Texts = Written<std::wstring>;

Texts Text(const EvaluationRequest& request) {
  return writtenStrings(Evaluate(L"Quillix_btoa", request, kResult));
}

TEST(BoolToStringNode, RendersMoreThanOneEntryInBrackets) {
  const auto bools = requestOf(2, {{kInput, boolArrays({{true, false, true}, {false, false}})}});
  EXPECT_EQ(Text(bools), (Texts{L"<1,0,1>", L"<0,0>"}));
}

TEST(BoolToStringNode, EndsItsBatchAfterAnInputOfAtMostOneEntry) {
  EXPECT_EQ(Text(requestOf(3, {{kInput, boolSingles({true, false, true})}})),
            (Texts{L"1", std::nullopt, std::nullopt}));
  EXPECT_EQ(Text(requestOf(4, {{kInput, boolArrays({{true, true}, {}, {true, false}, {true}})}})),
            (Texts{L"<1,1>", L"0", std::nullopt, std::nullopt}));
  // Each batch ends on its own: the second batch starts again.
  auto request = requestOf(4, {{kInput, boolSingles({true, false, true, false})}});
  request.batchSize = 2;
  EXPECT_EQ(Text(request), (Texts{L"1", std::nullopt, L"1", std::nullopt}));
}

}  // namespace
}  // namespace quillix::test
