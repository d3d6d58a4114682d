// Quillix_stoi through the offline host.
#include <gtest/gtest.h>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kActive = 1010, kString = 1620, kResult = 2010;

Ints Pack(std::initializer_list<bool> active, const std::wstring& text) {
  const auto out = Evaluate(
      L"Quillix_stoi",
      requestOf(1, {{kActive, boolSingles(active)}, {kString, PortValues::Strings1D({text})}}),
      kResult);
  return out.values.WasWritten(0) ? out.values.ArrayAt<XSI::LONG>(0) : Ints{};
}

const Ints kHeader{-1412571974, 12513024, -237305856, -127000127};

Ints Frame(Ints data) {
  Ints out = kHeader;
  out.push_back(XSI::LONG(data.size()));
  out.insert(out.end(), data.begin(), data.end());
  out.push_back(-1);
  return out;
}

TEST(PackStringNode, WritesTheFramedStringBitForBit) {
  EXPECT_EQ(Pack({true}, L"abc"), Frame({0x00636261}));
  EXPECT_EQ(Pack({true}, L"abcd"), Frame({0x64636261, 0}));
  EXPECT_EQ(Pack({true}, L""), Frame({0}));
  EXPECT_EQ(Pack({false}, L"abcd"), Frame({}));
}

TEST(PackStringNode, CharactersBeyondEightBitsGoThroughTheHostsNarrowConversion) {
  // U+00E9 fits in 8 bits and keeps its byte; U+20AC does not and becomes '?'.
  EXPECT_EQ(Pack({true}, L"\u00e9\u20acz"), Frame({0x007A3FE9}));
}

TEST(PackStringNode, ActiveDefaultsToTrue) {
  const auto out =
      Evaluate(L"Quillix_stoi", requestOf(1, {{kString, PortValues::Strings1D({L"hi"})}}), kResult);
  EXPECT_EQ(out.values.ArrayAt<XSI::LONG>(0), Frame({0x00006968}));
}

}  // namespace
}  // namespace quillix::test
