// Every threading-model-2 node evaluated on several threads over small batches gives exactly
// the single-threaded result: same values, same written elements. Run under ThreadSanitizer
// (THREADS label), this also proves the evaluations share no mutable state.
#include <gtest/gtest.h>

#include <random>

#include "robustness/node_inputs.h"
#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

void expectSameResults(const std::vector<OutputResult>& single,
                       const std::vector<OutputResult>& threaded) {
  ASSERT_EQ(single.size(), threaded.size());
  for (std::size_t k = 0; k < single.size(); ++k) {
    SCOPED_TRACE("port " + std::to_string(single[k].port));
    EXPECT_EQ(single[k].status, threaded[k].status);
    EXPECT_TRUE(single[k].values.SameData(threaded[k].values));
    EXPECT_EQ(single[k].values.written, threaded[k].values.written);
  }
}

std::vector<OutputResult> evaluateWith(const std::wstring& node, EvaluationRequest r,
                                       unsigned threads) {
  r.threads = threads;
  r.batchSize = 7;
  auto results = Evaluate(node, r, outputPorts(*NodeDefinition(node)));
  TakeLog();
  return results;
}

TEST(ThreadedNodes, EveryMultiThreadedNodeMatchesItsSingleThreadedRun) {
  int compared = 0;
  for (const auto& node : Plugin().Record().nodes) {
    if (node->threadingModel != 2 || node->name == L"Quillix_fpom") continue;
    SCOPED_TRACE(narrow(node->name));
    for (Fill fill : {Fill::Ordinary, Fill::MismatchedLengths, Fill::NaN}) {
      InputMaker maker(1234 + static_cast<unsigned>(fill));
      const EvaluationRequest r = maker.request(*node, fill, 150);
      expectSameResults(evaluateWith(node->name, r, 1), evaluateWith(node->name, r, 4));
    }
    ++compared;
  }
  EXPECT_GE(compared, 20);
}

// Many elements searching one shared mesh: a 9 × 9 grid of quads, built once per evaluation.
TEST(ThreadedNodes, PathSearchesOnOneSharedMeshMatchTheSingleThreadedRun) {
  constexpr int kSide = 9;
  std::vector<XSI::MATH::CVector3f> points;
  for (int y = 0; y < kSide; ++y)
    for (int x = 0; x < kSide; ++x)
      points.emplace_back(float(x), float(y), float((x * y) % 3) * 0.25f);
  std::vector<XSI::LONG> description;
  for (int y = 0; y + 1 < kSide; ++y)
    for (int x = 0; x + 1 < kSide; ++x)
      description.insert(description.end(), {y * kSide + x, y * kSide + x + 1,
                                             (y + 1) * kSide + x + 1, (y + 1) * kSide + x, -1});
  std::mt19937 rng(5);
  std::vector<std::vector<XSI::LONG>> inits;
  for (int e = 0; e < 300; ++e) {
    std::vector<XSI::LONG> init(2 + rng() % 3);
    for (auto& v : init) v = XSI::LONG(rng() % (kSide * kSide + 2)) - 1;  // a few out of range
    inits.push_back(init);
  }
  EvaluationRequest r;
  r.elements = 300;
  r.SetInput(1020, PortValues::ArraysOf<XSI::MATH::CVector3f>({points}).AsConstant());
  r.SetInput(1030, PortValues::ArraysOf<XSI::LONG>({description}).AsConstant());
  r.SetInput(1040, PortValues::ArraysOf<XSI::LONG>(inits));
  const auto single = evaluateWith(L"Quillix_fpom", r, 1);
  const auto threaded = evaluateWith(L"Quillix_fpom", r, 4);
  expectSameResults(single, threaded);
  // The mesh is connected: every in-range pair of distinct ends has a path.
  ASSERT_EQ(single.size(), 2u);
  int found = 0;
  for (ULONG e = 0; e < 300; ++e) found += single[1].values.arrays[e].empty() ? 0 : 1;
  EXPECT_GT(found, 100);
}

}  // namespace
}  // namespace quillix::test
