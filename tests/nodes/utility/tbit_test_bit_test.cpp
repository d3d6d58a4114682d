// Quillix_tbit through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kValue = 1010, kBit = 1020, kResult = 2010;

OutputResult TestBits(PortValues values, PortValues bits) {
  return Evaluate(L"Quillix_tbit", requestOf(values.count, {{kValue, values}, {kBit, bits}}),
                  kResult);
}

TEST(TestBitNode, HandlesTheFourStructureCombinations) {
  EXPECT_EQ(writtenSingles<XSI::LONG>(
                TestBits(PortValues::Singles<XSI::LONG>({5, 5, 5, 5, INT32_MIN, INT32_MAX}),
                         PortValues::Singles<XSI::LONG>({0, 1, 2, 34, -1, INT32_MIN}))),
            (Written<XSI::LONG>{1, 0, 1, 1, 1, 1}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(TestBits(PortValues::ArraysOf<XSI::LONG>({{5, 5, 5, 5}}),
                                              PortValues::ArraysOf<XSI::LONG>({{0, 1, 2}}))),
            (Written<Ints>{Ints{1, 0, 1}}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(TestBits(PortValues::ArraysOf<XSI::LONG>({{1, 2, 3}, {}}),
                                              PortValues::Singles<XSI::LONG>({0, 0}))),
            (Written<Ints>{Ints{1, 0, 1}, Ints{}}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(TestBits(PortValues::Singles<XSI::LONG>({6}),
                                              PortValues::ArraysOf<XSI::LONG>({{0, 1, 2, 3}}))),
            (Written<Ints>{Ints{0, 1, 1, 0}}));
}

}  // namespace
}  // namespace quillix::test
