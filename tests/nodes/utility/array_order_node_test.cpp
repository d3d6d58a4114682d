// Quillix_arrrev and Quillix_arrshft through the offline host.
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kArray = 1010, kShift = 1020, kResult = 2010;
using IntArrays = std::vector<Ints>;

OutputResult reverse(EvaluationRequest request) {
  return evaluate(L"Quillix_arrrev", request, kResult);
}
OutputResult shift(EvaluationRequest request) {
  return evaluate(L"Quillix_arrshft", request, kResult);
}

TEST(ArrayOrderNode, ReversesAndShiftsEachElementsArray) {
  const PortValues arrays = PortValues::arraysOf<XSI::LONG>({{1, 2, 3, 4}, {5}, {}, {6, 7, 8}});
  EXPECT_EQ(writtenArrays<XSI::LONG>(reverse(requestOf(4, {{kArray, arrays}}))),
            (Written<Ints>{Ints{4, 3, 2, 1}, Ints{5}, Ints{}, Ints{8, 7, 6}}));

  const PortValues shifts =
      PortValues::singles<XSI::LONG>({1, -1, 5, std::numeric_limits<XSI::LONG>::min()});
  EXPECT_EQ(writtenArrays<XSI::LONG>(shift(requestOf(4, {{kArray, arrays}, {kShift, shifts}}))),
            (Written<Ints>{Ints{4, 1, 2, 3}, Ints{5}, Ints{}, Ints{7, 8, 6}}));
}

// Every value type moves its entries whole: each entry is filled with one byte value, and the
// result must hold the same bytes in the new order. Booleans only take 0 and 1.
TEST(ArrayOrderNode, EveryValueTypeIsReorderedWhole) {
  for (ULONG type = 1; type <= 0x8000; type <<= 1) {
    const std::size_t size = xsihost::valueSize(type);
    if (size == 0) continue;
    SCOPED_TRACE(xsihost::typeName(type));
    const std::vector<int> fill =
        type == XSI::siICENodeDataBool ? std::vector<int>{1, 0, 0} : std::vector<int>{1, 2, 3};
    auto arrayOf = [&](std::initializer_list<int> order) {
      PortValues values;
      values.type = type;
      values.array = true;
      values.resize(1);
      for (int entry : order)
        values.arrays[0].insert(values.arrays[0].end(), size, std::byte(fill[entry]));
      return values;
    };
    const PortValues input = arrayOf({0, 1, 2});
    EXPECT_EQ(reverse(requestOf(1, {{kArray, input}})).values.arrays[0],
              arrayOf({2, 1, 0}).arrays[0]);
    EXPECT_EQ(shift(requestOf(1, {{kArray, input}, {kShift, PortValues::singles<XSI::LONG>({1})}}))
                  .values.arrays[0],
              arrayOf({2, 0, 1}).arrays[0]);
  }
}

TEST(ArrayOrderNode, StringArraysAreReorderedLikeAnyOtherType) {
  const PortValues strings = PortValues::strings2D({{L"a", L"", L"c", L"d"}, {}});
  EXPECT_EQ(writtenStringArrays(reverse(requestOf(2, {{kArray, strings}}))),
            (Written<Strings>{Strings{L"d", L"c", L"", L"a"}, Strings{}}));
  EXPECT_EQ(writtenStringArrays(shift(requestOf(
                2, {{kArray, strings}, {kShift, PortValues::singles<XSI::LONG>({-9, 3})}}))),
            (Written<Strings>{Strings{L"", L"c", L"d", L"a"}, Strings{}}));
}

TEST(ArrayOrderNode, SingleValuesAreCopiedThroughAndTheShiftIgnored) {
  EXPECT_EQ(writtenSingles<float>(
                reverse(requestOf(2, {{kArray, PortValues::singles<float>({1.5f, -2.0f})}}))),
            (Written<float>{1.5f, -2.0f}));
  EXPECT_EQ(writtenStrings(shift(requestOf(2, {{kArray, PortValues::strings1D({L"x", L"yz"})},
                                               {kShift, PortValues::singles<XSI::LONG>({1, 2})}}))),
            (Written<std::wstring>{L"x", L"yz"}));
}

TEST(ArrayOrderNode, FailedPortQueryWritesNothing) {
  auto request = requestOf(2, {{kArray, PortValues::arraysOf<XSI::LONG>({{1, 2}, {3}})}});
  request.failingPortInfo = {kArray};
  EXPECT_EQ(writtenArrays<XSI::LONG>(reverse(request)), (Written<Ints>(2, std::nullopt)));
}

}  // namespace
}  // namespace quillix::test
