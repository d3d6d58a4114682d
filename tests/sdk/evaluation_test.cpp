// The offline host's evaluation engine and SDK values, driven through the real plug-in.
#include <gtest/gtest.h>

#include <xsi_string.h>
#include <xsi_value.h>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

TEST(CString, ConvertsNarrowTextAndFindsSubstrings) {
  XSI::CString s("abc");
  s += L"def";
  EXPECT_EQ(s.Length(), 6u);
  EXPECT_EQ(s.FindString(L"cd"), 2u);
  EXPECT_EQ(s.FindString(L"cd", 3), 0xFFFFFFFFu);
  EXPECT_EQ(std::string(XSI::CString(L"a\u0416b").GetAsciiString()), "a?b");
  EXPECT_EQ(XSI::CString(L"MiXeD").Lower(), XSI::CString(L"mixed"));
  EXPECT_TRUE(XSI::CString().IsEmpty());
}

TEST(CValue, ConvertsBetweenNumbersAndKeepsPointers) {
  EXPECT_EQ(static_cast<XSI::LONG>(XSI::CValue(2.75)), 2);
  EXPECT_EQ(static_cast<float>(XSI::CValue(3)), 3.0f);
  EXPECT_TRUE(static_cast<bool>(XSI::CValue(1)));
  int target = 0;
  const XSI::CValue pointer(static_cast<XSI::CValue::siPtrType>(&target));
  EXPECT_EQ(static_cast<XSI::CValue::siPtrType>(pointer), &target);
  EXPECT_EQ(XSI::CValue(L"x").GetAsText(), XSI::CString(L"x"));
  XSI::CValueArray list;
  list.Add(XSI::CValue(1));
  list.Add(XSI::CValue(L"two"));
  const XSI::CValueArray copy = static_cast<XSI::CValueArray>(XSI::CValue(list));
  EXPECT_EQ(copy.GetCount(), 2);
}

TEST(Evaluation, MissingInputsReadTheirPortDefaults) {
  // Divide By defaults to 1, so the quotient is the value itself.
  EvaluationRequest r;
  r.elements = 2;
  r.SetInput(1010, PortValues::Singles<XSI::LONG>({5, -8}));
  const auto out = Evaluate(L"Quillix_divi", r, 2010);
  EXPECT_EQ(out.values.Single<XSI::LONG>(0), 5);
  EXPECT_EQ(out.values.Single<XSI::LONG>(1), -8);
}

TEST(Evaluation, PortInfoOverridesChangeTheNodesPath) {
  // Reported as an array while the data are single values: the node takes its array path,
  // the host refuses to serve the single values as arrays, and the node reads an empty array
  // instead of reading out of bounds.
  EvaluationRequest r;
  r.elements = 1;
  r.SetInput(1010, PortValues::Singles<XSI::LONG>({5}));
  r.portInfo[1010].structure = 2;
  const auto out = Evaluate(L"Quillix_divi", r, 2010);
  ASSERT_TRUE(out.values.array);
  EXPECT_TRUE(out.values.WasWritten(0));
  EXPECT_TRUE(out.values.ArrayAt<XSI::LONG>(0).empty());
}

TEST(Evaluation, EmptyIndexSetWritesNothing) {
  EvaluationRequest r;
  r.elements = 3;
  r.batch = std::vector<ULONG>{};
  r.SetInput(1010, PortValues::Singles<XSI::LONG>({1, 2, 3}));
  const auto out = Evaluate(L"Quillix_divi", r, 2010);
  for (ULONG i = 0; i < 3; ++i) EXPECT_FALSE(out.values.WasWritten(i));
}

}  // namespace
}  // namespace quillix::test
