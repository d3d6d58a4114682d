// Quillix_ntob through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010;

TEST(IntToBytesNode, EachOutputIsOneByteLeastSignificantFirst) {
  const auto request =
      requestOf(3, {{kInput, PortValues::Singles<XSI::LONG>({0x12345678, -2, 255})}});
  const auto out = Evaluate(L"Quillix_ntob", request, {2010, 2020, 2030, 2040});
  ASSERT_EQ(out.size(), 4u);
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[0]), (Written<XSI::LONG>{0x78, 254, 255}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[1]), (Written<XSI::LONG>{0x56, 255, 0}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[2]), (Written<XSI::LONG>{0x34, 255, 0}));
  EXPECT_EQ(writtenSingles<XSI::LONG>(out[3]), (Written<XSI::LONG>{0x12, 255, 0}));
}

TEST(IntToBytesNode, FailedPortQueryWritesNothing) {
  auto request = requestOf(2, {{kInput, PortValues::Singles<XSI::LONG>({1, 2})}});
  request.failingPortInfo = {kInput};
  EXPECT_EQ(writtenSingles<XSI::LONG>(Evaluate(L"Quillix_ntob", request, 2010)),
            (Written<XSI::LONG>(2, std::nullopt)));
}

}  // namespace
}  // namespace quillix::test
