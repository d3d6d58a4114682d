#include "kernel/status.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace quillix {
namespace {

std::string message(QRVStatus code, bool withCode, const char* prefix = nullptr) {
  char buffer[kStatusMessageBufferSize + 64];
  return StatusMessage(code, buffer, withCode, prefix);
}

TEST(StatusMessage, NullBufferReturnsNull) {
  EXPECT_EQ(StatusMessage(0, nullptr, true, "x"), nullptr);
}

TEST(StatusMessage, CombinesPrefixCodeTextAndMessage) {
  EXPECT_EQ(message(0, false), "no error.");
  EXPECT_EQ(message(0, true), "error 0: no error.");
  EXPECT_EQ(message(99, true), "error 99: too many vertices.");
  EXPECT_EQ(message(19, true, "Quillix: "), "Quillix: error 19: a pointer is equal NULL.");
  EXPECT_EQ(message(19, false, "Quillix: "), "Quillix: a pointer is equal NULL.");
}

TEST(StatusMessage, UnknownCodesAndSignedPrinting) {
  EXPECT_EQ(message(3, false), "unknown error.");
  EXPECT_EQ(message(4, false), "unknown error.");
  EXPECT_EQ(message(180, false), "unknown error.");
  EXPECT_EQ(message(181, true), "error 181: unknown error.");
  EXPECT_EQ(message(0xFFFFFFFFu, true), "error -1: unknown error.");
  EXPECT_EQ(message(0x80000000u, true), "error -2147483648: unknown error.");
}

TEST(StatusMessage, KeepsTheIrregularTexts) {
  EXPECT_EQ(message(10, false), "unable to (re)allocate  memory, reached memory limit.");
  EXPECT_EQ(message(37, false), "this function does not support \"in place\"");
  EXPECT_EQ(message(134, false), "SendTo() is only allowed with UPD.");
  std::size_t longest = 0;
  for (QRVStatus code = 0; code <= 181; ++code)
    longest = std::max(longest, std::string(StatusText(code)).size());
  EXPECT_EQ(longest, std::string(StatusText(85)).size());
  EXPECT_LT(longest + 32, kStatusMessageBufferSize);
  EXPECT_EQ(message(179, false), "some ICE Data has the wrong data type.");
}

}  // namespace
}  // namespace quillix
