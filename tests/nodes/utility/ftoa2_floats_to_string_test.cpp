// Quillix_ftoa2 through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kResult = 2010;

TEST(FloatsToStringNode, RendersItsOneInstance) {
  const auto floats = instancesOf(1, kInput, {PortValues::Singles<float>({2.5f})});
  EXPECT_EQ(writtenStrings(Evaluate(L"Quillix_ftoa2", floats, kResult)),
            (Written<std::wstring>{L"2.5"}));
}

}  // namespace
}  // namespace quillix::test
