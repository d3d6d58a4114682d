// Quillix_arrrev through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kArray = 1010, kResult = 2010;

OutputResult Reverse(EvaluationRequest request) {
  return Evaluate(L"Quillix_arrrev", request, kResult);
}

TEST(ArrayReverseNode, ReversesEachElementsArray) {
  const PortValues arrays = PortValues::ArraysOf<XSI::LONG>({{1, 2, 3, 4}, {5}, {}, {6, 7, 8}});
  EXPECT_EQ(writtenArrays<XSI::LONG>(Reverse(requestOf(4, {{kArray, arrays}}))),
            (Written<Ints>{Ints{4, 3, 2, 1}, Ints{5}, Ints{}, Ints{8, 7, 6}}));
}

// Every value type moves its entries whole: the result holds the same bytes in the new order.
TEST(ArrayReverseNode, EveryValueTypeIsReorderedWhole) {
  for (ULONG type : fixedSizeTypes()) {
    SCOPED_TRACE(xsihost::TypeName(type));
    EXPECT_EQ(Reverse(requestOf(1, {{kArray, threeEntryArray(type, {0, 1, 2})}})).values.arrays[0],
              threeEntryArray(type, {2, 1, 0}).arrays[0]);
  }
}

TEST(ArrayReverseNode, StringArraysAreReorderedLikeAnyOtherType) {
  const PortValues strings = PortValues::Strings2D({{L"a", L"", L"c", L"d"}, {}});
  EXPECT_EQ(writtenStringArrays(Reverse(requestOf(2, {{kArray, strings}}))),
            (Written<Strings>{Strings{L"d", L"c", L"", L"a"}, Strings{}}));
}

TEST(ArrayReverseNode, SingleValuesAreCopiedThrough) {
  EXPECT_EQ(writtenSingles<float>(
                Reverse(requestOf(2, {{kArray, PortValues::Singles<float>({1.5f, -2.0f})}}))),
            (Written<float>{1.5f, -2.0f}));
}

TEST(ArrayReverseNode, FailedPortQueryWritesNothing) {
  auto request = requestOf(2, {{kArray, PortValues::ArraysOf<XSI::LONG>({{1, 2}, {3}})}});
  request.failingPortInfo = {kArray};
  EXPECT_EQ(writtenArrays<XSI::LONG>(Reverse(request)), (Written<Ints>(2, std::nullopt)));
}

}  // namespace
}  // namespace quillix::test
