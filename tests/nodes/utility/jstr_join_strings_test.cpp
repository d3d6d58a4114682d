// Quillix_jstr through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kInput = 1010, kDelimiter = 1020, kResult = 2010;

Written<std::wstring> Join(PortValues input, PortValues delimiter) {
  return writtenStrings(
      Evaluate(L"Quillix_jstr", requestOf(1, {{kInput, input}, {kDelimiter, delimiter}}), kResult));
}

TEST(JoinStringsNode, JoinsElementZerosArrayKeepingTheTrailingDelimiter) {
  const PortValues dash = PortValues::Strings1D({L"-"});
  EXPECT_EQ(Join(PortValues::Strings2D({{L"a", L"b", L"c"}}), dash),
            (Written<std::wstring>{L"a-b-c"}));
  EXPECT_EQ(Join(PortValues::Strings2D({{L"a", L"", L"c"}}), dash),
            (Written<std::wstring>{L"a-c"}));
  EXPECT_EQ(Join(PortValues::Strings2D({{L"", L"b"}}), dash), (Written<std::wstring>{L"b"}));
  EXPECT_EQ(Join(PortValues::Strings2D({{L"a", L"b", L""}}), dash),
            (Written<std::wstring>{L"a-b-"}));
  EXPECT_EQ(Join(PortValues::Strings2D({{}}), dash), (Written<std::wstring>{L""}));
  EXPECT_EQ(Join(PortValues::Strings1D({L"as it is"}), dash), (Written<std::wstring>{L"as it is"}));
}

TEST(JoinStringsNode, UnconnectedDelimiterIsEmptyAndFailedQueryIsReported) {
  auto request = requestOf(1, {{kInput, PortValues::Strings2D({{L"x", L"y"}})}});
  EXPECT_EQ(writtenStrings(Evaluate(L"Quillix_jstr", request, kResult)),
            (Written<std::wstring>{L"xy"}));
  request.failingPortInfo = {kInput};
  EXPECT_EQ(writtenStrings(Evaluate(L"Quillix_jstr", request, kResult)),
            (Written<std::wstring>{L"GetPortInfo() failed"}));
  EXPECT_EQ(Evaluate(L"Quillix_jstr", request, 2020).values.count, 0u);
}

}  // namespace
}  // namespace quillix::test
