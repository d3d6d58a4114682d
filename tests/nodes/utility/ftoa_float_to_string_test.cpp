// Quillix_ftoa through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kResult = 2010;
using Texts = Written<std::wstring>;

TEST(FloatToStringNode, RendersInGeneralFormWithThreeExponentDigits) {
  const auto floats = requestOf(3, {{kInput, PortValues::Singles<float>({1e20f, 0.5f, -1.5e-7f})}});
  EXPECT_EQ(writtenStrings(Evaluate(L"Quillix_ftoa", floats, kResult)),
            (Texts{L"1e+020", L"0.5", L"-1.5e-007"}));
}

TEST(FloatToStringNode, FailedPortQueryWritesNothing) {
  auto request = requestOf(2, {{kInput, PortValues::Singles<float>({1.0f, 2.0f})}});
  request.failingPortInfo = {kInput};
  EXPECT_EQ(writtenStrings(Evaluate(L"Quillix_ftoa", request, kResult)),
            (Texts{std::nullopt, std::nullopt}));
}

}  // namespace
}  // namespace quillix::test
