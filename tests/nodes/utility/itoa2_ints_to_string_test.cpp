// Quillix_itoa2 through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kResult = 2010;

TEST(IntsToStringNode, JoinsItsInstancesInOrder) {
  const auto ints = instancesOf(
      1, kInput, {PortValues::ArraysOf<XSI::LONG>({{1, 2}}), PortValues::Singles<XSI::LONG>({-3})});
  EXPECT_EQ(writtenStrings(Evaluate(L"Quillix_itoa2", ints, kResult)),
            (Written<std::wstring>{L"<1,2>,-3"}));
}

}  // namespace
}  // namespace quillix::test
