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

TEST(IntToBytesNode, ConstantBatchUnknownPortAndFailedQuery) {
  auto request = requestOf(3, {{kInput, PortValues::singles<XSI::LONG>({-1}).asConstant()}});
  request.batch = std::vector<ULONG>{0, 2};
  EXPECT_EQ(writtenSingles<XSI::LONG>(evaluate(L"Quillix_ntob", request, 2040)),
            (Written<XSI::LONG>{255, std::nullopt, 255}));
  EXPECT_EQ(evaluate(L"Quillix_ntob", request, 2050).values.count, 0u);
  request.failingPortInfo = {kInput};
  EXPECT_EQ(writtenSingles<XSI::LONG>(evaluate(L"Quillix_ntob", request, 2010)),
            (Written<XSI::LONG>(3, std::nullopt)));
}

OutputResult testBits(PortValues values, PortValues bits) {
  return evaluate(L"Quillix_tbit", requestOf(values.count, {{kValue, values}, {kBit, bits}}),
                  kResult);
}

TEST(TestBitNode, HandlesTheFourStructureCombinations) {
  EXPECT_EQ(
      writtenSingles<XSI::LONG>(testBits(PortValues::singles<XSI::LONG>({5, 5, 5, 5, 1 << 31}),
                                         PortValues::singles<XSI::LONG>({0, 1, 2, 34, -1}))),
      (Written<XSI::LONG>{1, 0, 1, 1, 1}));
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

TEST(TestBitNode, ManyThreadsGiveTheSingleThreadedResult) {
  const ULONG n = 4000;
  Ints values(n), bits(n);
  for (ULONG i = 0; i < n; ++i) {
    values[i] = XSI::LONG(i * 2654435761u);
    bits[i] = XSI::LONG(i % 70) - 35;
  }
  auto request =
      requestOf(n, {{kValue, PortValues::singles(values)}, {kBit, PortValues::singles(bits)}});
  request.batchSize = 64;
  for (const wchar_t* node : {L"Quillix_tbit", L"Quillix_ntob"}) {
    request.threads = 1;
    const auto single = writtenSingles<XSI::LONG>(evaluate(node, request, kResult));
    request.threads = 4;
    EXPECT_EQ(writtenSingles<XSI::LONG>(evaluate(node, request, kResult)), single);
  }
}

}  // namespace
}  // namespace quillix::test
