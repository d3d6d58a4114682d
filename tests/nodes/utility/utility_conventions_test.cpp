// The evaluation conventions, checked on every element-wise utility node alike: a constant
// input reads as its value repeated, a batch writes exactly its elements, an unknown output
// port writes nothing, and several threads give the single-threaded result.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kElements = 4;
const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

struct Case {
  const wchar_t* node;
  std::vector<ULONG> ports;
  EvaluationRequest request;  // kElements elements
  bool writesBatchOnly = true;
};

EvaluationRequest inputs(std::vector<std::pair<ULONG, PortValues>> ports,
                         std::vector<PortValues> laterInstances = {}) {
  EvaluationRequest r;
  r.elements = kElements;
  for (auto& [port, values] : ports) r.SetInput(port, values);
  for (ULONG k = 0; k < laterInstances.size(); ++k) r.SetInput(1010, laterInstances[k], k + 1);
  return r;
}

std::vector<Case> cases() {
  const auto ints = PortValues::Singles<XSI::LONG>({5, -1, 0x12345678, 34});
  const auto intArrays = PortValues::ArraysOf<XSI::LONG>({{1, 2, 3}, {4, 5}, {}, {-6, 7}});
  const auto floats = PortValues::Singles<float>({1.5f, kNaN, -kInf, 1e20f});
  const auto floatArrays =
      PortValues::ArraysOf<float>({{0.25f, kInf}, {-3.0f}, {1e-9f, 2.0f}, {7.0f, 8.0f}});
  const auto bools = boolSingles({true, false, false, true});
  const auto boolLists =
      boolArrays({{true, false}, {false, false}, {true, true, true}, {false, true}});
  return {
      {L"Quillix_arrrev", {2010}, inputs({{1010, intArrays}})},
      {L"Quillix_arrrev",
       {2010},
       inputs({{1010, PortValues::Strings2D({{L"a", L"b"}, {}, {L"c"}, {L"d", L"", L"e"}})}})},
      {L"Quillix_arrshft", {2010}, inputs({{1010, floatArrays}, {1020, ints}})},
      {L"Quillix_btoa", {2010}, inputs({{1010, boolLists}})},
      {L"Quillix_btoa2", {2010}, inputs({{1010, bools}}, {boolLists})},
      {L"Quillix_itoa", {2010}, inputs({{1010, intArrays}})},
      {L"Quillix_itoa2", {2010}, inputs({{1010, ints}}, {intArrays, ints})},
      {L"Quillix_ftoa", {2010}, inputs({{1010, floats}})},
      {L"Quillix_ftoa2", {2010}, inputs({{1010, floatArrays}}, {floats})},
      {L"Quillix_ntoa",
       {2010},
       inputs({{1010, floatArrays}, {1020, ints}, {1030, bools}, {1040, ints}})},
      {L"Quillix_ntoa",
       {2010},
       inputs({{1010, floats}, {1020, ints}, {1030, bools}, {1040, ints}})},
      {L"Quillix_ntob", {2010, 2020, 2030, 2040}, inputs({{1010, ints}})},
      {L"Quillix_tbit", {2010}, inputs({{1010, ints}, {1020, ints}})},
      {L"Quillix_tbit", {2010}, inputs({{1010, intArrays}, {1020, ints}})},
      {L"Quillix_tbit", {2010}, inputs({{1010, ints}, {1020, intArrays}})},
      {L"Quillix_tbit", {2010}, inputs({{1010, intArrays}, {1020, intArrays}})},
      {L"Quillix_nan", {2010, 2020, 2030}, inputs({{1010, floats}})},
      {L"Quillix_nan2", {2010, 2020, 2030}, inputs({{1010, floats}})},
      {L"Quillix_nan2", {2010, 2020, 2030}, inputs({{1010, floatArrays}})},
      // Walks every point whatever the batch, so that its running numbering holds.
      {L"Quillix_cuappid", {2010}, inputs({{1010, ints}}), false},
  };
}

// Copies item `item` of `from` into item `at` of `to` (same type and structure).
void copyItem(const PortValues& from, ULONG item, PortValues& to, ULONG at) {
  const std::size_t size = xsihost::ValueSize(from.type);
  if (from.IsString() && from.array) {
    to.stringArrays[at] = from.stringArrays[item];
  } else if (from.IsString()) {
    to.strings[at] = from.strings[item];
  } else if (from.array) {
    to.arrays[at] = from.arrays[item];
  } else {
    std::memcpy(to.flat.data() + at * size, from.flat.data() + item * size, size);
  }
}

PortValues repeatItem(const PortValues& values, ULONG item, ULONG count) {
  PortValues out;
  out.type = values.type;
  out.array = values.array;
  out.Resize(count);
  for (ULONG k = 0; k < count; ++k) copyItem(values, item, out, k);
  return out;
}

void expectSameOutputs(const std::vector<OutputResult>& a, const std::vector<OutputResult>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    EXPECT_EQ(a[i].status, 0u);
    EXPECT_TRUE(a[i].values.SameData(b[i].values)) << "port " << a[i].port;
    EXPECT_EQ(a[i].values.written, b[i].values.written) << "port " << a[i].port;
  }
}

std::string nameOf(const Case& c) { return std::string(c.node, c.node + std::wcslen(c.node)); }

TEST(UtilityConventions, ConstantInputGivesTheSameResultAsItsValueRepeated) {
  for (const Case& c : cases()) {
    for (const auto& [key, values] : c.request.inputs) {
      SCOPED_TRACE(nameOf(c) + " input " + std::to_string(key.first));
      EvaluationRequest constant = c.request;
      EvaluationRequest repeated = c.request;
      constant.inputs[key] = repeatItem(values, 2, 1).AsConstant();
      repeated.inputs[key] = repeatItem(values, 2, kElements);
      expectSameOutputs(Evaluate(c.node, constant, c.ports), Evaluate(c.node, repeated, c.ports));
    }
  }
}

TEST(UtilityConventions, BatchSubsetWritesExactlyItsElementsWithTheSameValues) {
  for (const Case& c : cases()) {
    SCOPED_TRACE(nameOf(c));
    EvaluationRequest subset = c.request;
    subset.batch = std::vector<ULONG>{1, 3};
    const auto whole = Evaluate(c.node, c.request, c.ports);
    const auto part = Evaluate(c.node, subset, c.ports);
    ASSERT_EQ(part.size(), whole.size());
    for (std::size_t p = 0; p < part.size(); ++p) {
      for (ULONG i = 0; i < kElements; ++i) {
        const bool inBatch = i == 1 || i == 3;
        EXPECT_EQ(part[p].values.WasWritten(i), inBatch || !c.writesBatchOnly) << "element " << i;
        if (part[p].values.WasWritten(i)) {
          EXPECT_TRUE(repeatItem(part[p].values, i, 1).SameData(repeatItem(whole[p].values, i, 1)));
        }
      }
    }
    subset.batch = std::vector<ULONG>{};
    if (c.writesBatchOnly) {
      for (const OutputResult& out : Evaluate(c.node, subset, c.ports)) {
        EXPECT_EQ(out.values.written, std::vector<char>(kElements, 0));
      }
    }
  }
}

TEST(UtilityConventions, UnknownOutputPortWritesNothingAndSucceeds) {
  for (const Case& c : cases()) {
    const OutputResult out = Evaluate(c.node, c.request, 2090);
    EXPECT_EQ(out.status, 0u) << nameOf(c);
    EXPECT_EQ(out.values.count, 0u) << nameOf(c);
  }
}

TEST(UtilityConventions, ManyThreadsGiveTheSingleThreadedResult) {
  constexpr ULONG kMany = 3000;
  for (Case c : cases()) {
    if (NodeDefinition(c.node)->threadingModel != 2) continue;
    SCOPED_TRACE(nameOf(c));
    c.request.elements = kMany;
    for (auto& [key, values] : c.request.inputs) {
      PortValues tiled = repeatItem(values, 0, kMany);
      for (ULONG i = 0; i < kMany; ++i) copyItem(values, (i * 7) % kElements, tiled, i);
      values = tiled;
    }
    c.request.batchSize = 37;
    c.request.threads = 1;
    const auto single = Evaluate(c.node, c.request, c.ports);
    c.request.threads = 4;
    expectSameOutputs(Evaluate(c.node, c.request, c.ports), single);
  }
}

}  // namespace
}  // namespace quillix::test
