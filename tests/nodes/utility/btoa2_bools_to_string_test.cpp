// Quillix_btoa2 through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kResult = 2010;

TEST(BoolsToStringNode, JoinsItsInstancesInOrder) {
  const auto bools = instancesOf(
      2, kInput,
      {boolSingles({false, true}), boolSingles({true, true}), boolArrays({{true, true}, {}})});
  EXPECT_EQ(writtenStrings(Evaluate(L"Quillix_btoa2", bools, kResult)),
            (Written<std::wstring>{L"0,1,<1,1>", L"1,1,0"}));
}

}  // namespace
}  // namespace quillix::test
