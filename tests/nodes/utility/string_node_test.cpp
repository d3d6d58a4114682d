// Quillix_jstr and Quillix_stoi through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kJoinInput = 1010, kDelimiter = 1020, kActive = 1010, kString = 1620;
constexpr ULONG kResult = 2010;

Written<std::wstring> join(PortValues input, PortValues delimiter) {
  return writtenStrings(evaluate(
      L"Quillix_jstr", requestOf(1, {{kJoinInput, input}, {kDelimiter, delimiter}}), kResult));
}

TEST(JoinStringsNode, JoinsElementZerosArrayKeepingTheTrailingDelimiter) {
  const PortValues dash = PortValues::strings1D({L"-"});
  EXPECT_EQ(join(PortValues::strings2D({{L"a", L"b", L"c"}}), dash),
            (Written<std::wstring>{L"a-b-c"}));
  EXPECT_EQ(join(PortValues::strings2D({{L"a", L"", L"c"}}), dash),
            (Written<std::wstring>{L"a-c"}));
  EXPECT_EQ(join(PortValues::strings2D({{L"", L"b"}}), dash), (Written<std::wstring>{L"b"}));
  EXPECT_EQ(join(PortValues::strings2D({{L"a", L"b", L""}}), dash),
            (Written<std::wstring>{L"a-b-"}));
  EXPECT_EQ(join(PortValues::strings2D({{}}), dash), (Written<std::wstring>{L""}));
  EXPECT_EQ(join(PortValues::strings1D({L"as it is"}), dash), (Written<std::wstring>{L"as it is"}));
}

TEST(JoinStringsNode, UnconnectedDelimiterIsEmptyAndFailedQueryIsReported) {
  auto request = requestOf(1, {{kJoinInput, PortValues::strings2D({{L"x", L"y"}})}});
  EXPECT_EQ(writtenStrings(evaluate(L"Quillix_jstr", request, kResult)),
            (Written<std::wstring>{L"xy"}));
  request.failingPortInfo = {kJoinInput};
  EXPECT_EQ(writtenStrings(evaluate(L"Quillix_jstr", request, kResult)),
            (Written<std::wstring>{L"GetPortInfo() failed"}));
  EXPECT_EQ(evaluate(L"Quillix_jstr", request, 2020).values.count, 0u);
}

Ints pack(std::initializer_list<bool> active, const std::wstring& text) {
  const auto out = evaluate(
      L"Quillix_stoi",
      requestOf(1, {{kActive, boolSingles(active)}, {kString, PortValues::strings1D({text})}}),
      kResult);
  return out.values.wasWritten(0) ? out.values.arrayAt<XSI::LONG>(0) : Ints{};
}

const Ints kHeader{-1412571974, 12513024, -237305856, -127000127};

Ints frame(Ints data) {
  Ints out = kHeader;
  out.push_back(XSI::LONG(data.size()));
  out.insert(out.end(), data.begin(), data.end());
  out.push_back(-1);
  return out;
}

TEST(PackStringNode, WritesTheFramedStringBitForBit) {
  EXPECT_EQ(pack({true}, L"abc"), frame({0x00636261}));
  EXPECT_EQ(pack({true}, L"abcd"), frame({0x64636261, 0}));
  EXPECT_EQ(pack({true}, L""), frame({0}));
  EXPECT_EQ(pack({false}, L"abcd"), frame({}));
}

TEST(PackStringNode, CharactersBeyondEightBitsGoThroughTheHostsNarrowConversion) {
  // U+00E9 fits in 8 bits and keeps its byte; U+20AC does not and becomes '?'.
  EXPECT_EQ(pack({true}, L"\u00e9\u20acz"), frame({0x007A3FE9}));
}

TEST(PackStringNode, ActiveDefaultsToTrue) {
  const auto out =
      evaluate(L"Quillix_stoi", requestOf(1, {{kString, PortValues::strings1D({L"hi"})}}), kResult);
  EXPECT_EQ(out.values.arrayAt<XSI::LONG>(0), frame({0x00006968}));
}

}  // namespace
}  // namespace quillix::test
