#include "nodes/utility/string_join.h"

#include <gtest/gtest.h>

#include <vector>

namespace quillix {
namespace {

std::wstring join(std::vector<std::wstring_view> entries, std::wstring_view delimiter = L"-") {
  return joinStrings(entries, delimiter);
}

TEST(JoinStrings, JoinsNonEmptyEntries) {
  EXPECT_EQ(join({L"a", L"b", L"c"}), L"a-b-c");
  EXPECT_EQ(join({L"a", L"", L"c"}), L"a-c");
  EXPECT_EQ(join({L"", L"b"}), L"b");
  EXPECT_EQ(join({L"only"}), L"only");
  EXPECT_EQ(join({}), L"");
  EXPECT_EQ(join({L"", L""}), L"");
  EXPECT_EQ(join({L"x", L"y"}, L""), L"xy");
  EXPECT_EQ(join({L"x", L"y"}, L", "), L"x, y");
}

TEST(JoinStrings, EmptyLastEntryLeavesATrailingDelimiter) {
  EXPECT_EQ(join({L"a", L"b", L""}), L"a-b-");
  EXPECT_EQ(join({L"a", L"", L""}), L"a-");
}

}  // namespace
}  // namespace quillix
