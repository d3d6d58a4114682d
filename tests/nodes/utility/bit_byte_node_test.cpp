// Quillix_ntob and Quillix_tbit through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kValue = 1010, kBit = 1020, kResult = 2010;

TEST(IntToBytesNode, EachOutputIsOneByteLeastSignificantFirst) {
  const auto request =
      requestOf(3, {{kInput, PortValues::singles<XSI::LONG>({0x12345678, -2, 255})}});
  const auto out = evaluate(L"Quillix_ntob", request, {2010, 2020, 2030, 2040});
  ASSERT_EQ(out.size(), 4u);
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[0]), (Written<XSI::LONG>{0x78, 254, 255}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[1]), (Written<XSI::LONG>{0x56, 255, 0}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[2]), (Written<XSI::LONG>{0x34, 255, 0}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[3]), (Written<XSI::LONG>{0x12, 255, 0}));
}

TEST(IntToBytesNode, FailedPortQueryWritesNothing) {
  auto request = requestOf(2, {{kInput, PortValues::singles<XSI::LONG>({1, 2})}});
  request.failingPortInfo = {kInput};
  EXPECT_EQ(writtenSingles<XSI::LONG>(evaluate(L"Quillix_ntob", request, 2010)),
            (Written<XSI::LONG>(2, std::nullopt)));
}

OutputResult testBits(PortValues values, PortValues bits) {
  return evaluate(L"Quillix_tbit", requestOf(values.count, {{kValue, values}, {kBit, bits}}),
                  kResult);
}

TEST(TestBitNode, HandlesTheFourStructureCombinations) {
  EXPECT_EQ(writtenSingles<XSI::LONG>(
                testBits(PortValues::singles<XSI::LONG>({5, 5, 5, 5, INT32_MIN, INT32_MAX}),
                         PortValues::singles<XSI::LONG>({0, 1, 2, 34, -1, INT32_MIN}))),
            (Written<XSI::LONG>{1, 0, 1, 1, 1, 1}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(testBits(PortValues::arraysOf<XSI::LONG>({{5, 5, 5, 5}}),
                                              PortValues::arraysOf<XSI::LONG>({{0, 1, 2}}))),
            (Written<Ints>{Ints{1, 0, 1}}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(testBits(PortValues::arraysOf<XSI::LONG>({{1, 2, 3}, {}}),
                                              PortValues::singles<XSI::LONG>({0, 0}))),
            (Written<Ints>{Ints{1, 0, 1}, Ints{}}));
  EXPECT_EQ(writtenArrays<XSI::LONG>(testBits(PortValues::singles<XSI::LONG>({6}),
                                              PortValues::arraysOf<XSI::LONG>({{0, 1, 2, 3}}))),
            (Written<Ints>{Ints{0, 1, 1, 0}}));
}

}  // namespace
}  // namespace quillix::test
