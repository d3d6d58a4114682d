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

TEST(Evaluation, WholeBatchWritesCountEvenWhenTheyLookUnwritten) {
  // Quillix_divi promises to write its whole batch. The quotient 0xA5A5A5A5 has the bytes of
  // the host's unwritten fill, and still counts as written; constant inputs give every element
  // of a batch with gaps the one quotient, and the elements outside stay unwritten.
  constexpr XSI::LONG kFillPattern = XSI::LONG(0xA5A5A5A5u);
  EvaluationRequest r;
  r.elements = 4;
  r.SetInput(1010, PortValues::Singles<XSI::LONG>({kFillPattern, 6, kFillPattern, 9}));
  const auto out = Evaluate(L"Quillix_divi", r, 2010);
  EXPECT_EQ(out.values.written, std::vector<char>(4, 1));
  EXPECT_EQ(out.values.Single<XSI::LONG>(2), kFillPattern);

  r.SetInput(1010, PortValues::Singles<XSI::LONG>({kFillPattern}).AsConstant());
  r.SetInput(1020, PortValues::Singles<XSI::LONG>({-1}).AsConstant());
  r.batch = std::vector<ULONG>{0, 2, 3};
  const auto constant = Evaluate(L"Quillix_divi", r, 2010);
  EXPECT_EQ(constant.values.written, (std::vector<char>{1, 0, 1, 1}));
  for (ULONG i : {0u, 2u, 3u}) EXPECT_EQ(constant.values.Single<XSI::LONG>(i), -kFillPattern);
}

TEST(Evaluation, ReusedOutputBuffersAnswerLikeFreshOnes) {
  xsihost::NodeInstance instance(Plugin(), *NodeDefinition(L"Quillix_divi"));
  EvaluationRequest whole;
  whole.elements = 4;
  whole.SetInput(1010, PortValues::Singles<XSI::LONG>({7, -7, 9, 100}));
  whole.SetInput(1020, PortValues::Singles<XSI::LONG>({2, 2, 0, 7}));
  std::vector<OutputResult> results;
  instance.Evaluate(whole, {2010, 2020}, results);
  const void* storage = results[1].values.flat.data();

  // Ports asked in the other order, fewer elements written: nothing of the first evaluation
  // shows through, and the remainder keeps its buffer.
  EvaluationRequest part = whole;
  part.SetInput(1010, PortValues::Singles<XSI::LONG>({8, -8, 10, 101}));
  part.batch = std::vector<ULONG>{1, 3};
  instance.Evaluate(part, {2020, 2010}, results);
  const std::vector<OutputResult> fresh = Evaluate(L"Quillix_divi", part, {2020, 2010});
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(results[0].values.flat.data(), storage);
  for (std::size_t p = 0; p < 2; ++p) {
    EXPECT_EQ(results[p].port, fresh[p].port);
    EXPECT_TRUE(results[p].values.SameData(fresh[p].values)) << "port " << fresh[p].port;
    EXPECT_EQ(results[p].values.written, fresh[p].values.written) << "port " << fresh[p].port;
  }
  EXPECT_EQ(results[1].values.written, (std::vector<char>{0, 1, 0, 1}));
}

TEST(Evaluation, InputsTurnDirtyExactlyWhenTheirDataChange) {
  xsihost::NodeInstance instance(Plugin(), *NodeDefinition(L"Quillix_divi"));
  const auto evaluateClean = [&](const EvaluationRequest& r) {
    instance.Evaluate(r, {});
    const bool dirty = instance.IsDirty(1010, 0);
    instance.ClearState(1010, 0);
    return dirty;
  };
  EvaluationRequest r;
  r.elements = 3;
  r.SetInput(1010, PortValues::Singles<XSI::LONG>({1, 2, 3}));
  EXPECT_TRUE(evaluateClean(r));
  EXPECT_FALSE(evaluateClean(r));
  // The same data set again, or put in without SetInput's hash: still clean.
  r.SetInput(1010, PortValues::Singles<XSI::LONG>({1, 2, 3}));
  EXPECT_FALSE(evaluateClean(r));
  r.inputs[{1010, 0}] = PortValues::Singles<XSI::LONG>({1, 2, 3});
  EXPECT_FALSE(evaluateClean(r));
  // One value, the constancy or the count changed: dirty.
  r.SetInput(1010, PortValues::Singles<XSI::LONG>({1, 2, 4}));
  EXPECT_TRUE(evaluateClean(r));
  r.SetInput(1010, PortValues::Singles<XSI::LONG>({1, 2, 4}).AsConstant());
  EXPECT_TRUE(evaluateClean(r));
  r.inputs[{1010, 0}] = PortValues::Singles<XSI::LONG>({1, 2});
  EXPECT_TRUE(evaluateClean(r));
  // Arrays whose entries move from one element to the next differ too.
  r.SetInput(1010, PortValues::ArraysOf<XSI::LONG>({{1, 2}, {3}, {}}));
  EXPECT_TRUE(evaluateClean(r));
  r.SetInput(1010, PortValues::ArraysOf<XSI::LONG>({{1}, {2, 3}, {}}));
  EXPECT_TRUE(evaluateClean(r));
}

}  // namespace
}  // namespace quillix::test
