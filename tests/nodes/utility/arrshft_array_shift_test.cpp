// Quillix_arrshft through the offline host.
#include <gtest/gtest.h>

#include <limits>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kArray = 1010, kShift = 1020, kResult = 2010;

OutputResult Shift(EvaluationRequest request) {
  return Evaluate(L"Quillix_arrshft", request, kResult);
}

TEST(ArrayShiftNode, ShiftsEachElementsArrayByItsShift) {
  const PortValues arrays = PortValues::ArraysOf<XSI::LONG>({{1, 2, 3, 4}, {5}, {}, {6, 7, 8}});
  const PortValues shifts =
      PortValues::Singles<XSI::LONG>({1, -1, 5, std::numeric_limits<XSI::LONG>::min()});
  EXPECT_EQ(writtenArrays<XSI::LONG>(Shift(requestOf(4, {{kArray, arrays}, {kShift, shifts}}))),
            (Written<Ints>{Ints{4, 1, 2, 3}, Ints{5}, Ints{}, Ints{7, 8, 6}}));
}

// Every value type moves its entries whole: the result holds the same bytes in the new order.
TEST(ArrayShiftNode, EveryValueTypeIsReorderedWhole) {
  for (ULONG type : fixedSizeTypes()) {
    SCOPED_TRACE(xsihost::TypeName(type));
    const auto request = requestOf(1, {{kArray, threeEntryArray(type, {0, 1, 2})},
                                       {kShift, PortValues::Singles<XSI::LONG>({1})}});
    EXPECT_EQ(Shift(request).values.arrays[0], threeEntryArray(type, {2, 0, 1}).arrays[0]);
  }
}

TEST(ArrayShiftNode, StringArraysAreReorderedLikeAnyOtherType) {
  const PortValues strings = PortValues::Strings2D({{L"a", L"", L"c", L"d"}, {}});
  EXPECT_EQ(writtenStringArrays(Shift(requestOf(
                2, {{kArray, strings}, {kShift, PortValues::Singles<XSI::LONG>({-9, 3})}}))),
            (Written<Strings>{Strings{L"", L"c", L"d", L"a"}, Strings{}}));
}

TEST(ArrayShiftNode, SingleValuesAreCopiedThroughAndTheShiftIgnored) {
  EXPECT_EQ(writtenStrings(Shift(requestOf(2, {{kArray, PortValues::Strings1D({L"x", L"yz"})},
                                               {kShift, PortValues::Singles<XSI::LONG>({1, 2})}}))),
            (Written<std::wstring>{L"x", L"yz"}));
}

}  // namespace
}  // namespace quillix::test
