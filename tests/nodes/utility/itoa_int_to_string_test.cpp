// Quillix_itoa through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kResult = 2010;

TEST(IntToStringNode, RendersEmptyAsZeroOneEntryBareAndMoreInBrackets) {
  const auto ints = requestOf(3, {{kInput, PortValues::ArraysOf<XSI::LONG>({{3, -12}, {}, {7}})}});
  EXPECT_EQ(writtenStrings(Evaluate(L"Quillix_itoa", ints, kResult)),
            (Written<std::wstring>{L"<3,-12>", L"0", L"7"}));
}

}  // namespace
}  // namespace quillix::test
