// Lifecycles without leaks: Quillix_fpom's Init, evaluations with changing and unchanging
// inputs, disabling, re-enabling and Term, ten thousand times, and the plug-in loaded and
// unloaded a thousand times. The memory context must be back to zero bytes whenever the node
// holds no mesh, and the process's heap must not grow with the number of cycles.
#include <gtest/gtest.h>

#include <memory>
#include <span>
#include <string>

#include "core/mesh/path_chain.h"
#include "core/mesh/path_node_state.h"
#include "robustness/heap_bytes.h"
#include "robustness/node_inputs.h"
#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

using XSI::MATH::CVector3f;

// Two triangles sharing an edge.
const std::vector<CVector3f> kPoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
const std::vector<XSI::LONG> kDescription = {0, 1, 2, -1, 0, 2, 3, -1};

EvaluationRequest pathRequest(bool enable, float scale) {
  std::vector<CVector3f> points;
  for (const auto& p : kPoints) points.emplace_back(p.GetX() * scale, p.GetY() * scale, p.GetZ());
  EvaluationRequest r = requestFor({{1010, boolSingle(enable)},
                                    {1020, PortValues::ArraysOf<CVector3f>({points})},
                                    {1030, PortValues::ArraysOf<XSI::LONG>({kDescription})},
                                    {1040, PortValues::ArraysOf<XSI::LONG>({{1, 3}})}});
  return r;
}

// One lifecycle: Init with the first evaluation, the same inputs again, disabled, then
// enabled again on a changed mesh (a rebuild), and Term.
void runCycle(const xsihost::NodeDefinitionRecord& node, int i) {
  xsihost::NodeInstance instance(Plugin(), node);
  const std::vector<ULONG> ports = {2010, 2020};
  auto out = instance.Evaluate(pathRequest(true, 1.0f), ports);
  ASSERT_EQ(out[0].values.Single<XSI::LONG>(0), 0);
  ASSERT_EQ(out[1].values.ArrayAt<XSI::LONG>(0).size(), 3u);
  out = instance.Evaluate(pathRequest(true, 1.0f), ports);
  ASSERT_EQ(out[1].values.ArrayAt<XSI::LONG>(0).size(), 3u);
  out = instance.Evaluate(pathRequest(false, 1.0f), ports);
  ASSERT_EQ(out[0].values.Single<XSI::LONG>(0), -2);
  out = instance.Evaluate(pathRequest(true, 2.0f + float(i % 3)), ports);
  ASSERT_EQ(out[1].values.ArrayAt<XSI::LONG>(0).size(), 3u);
}

TEST(Lifecycle, TenThousandPathNodeCyclesThroughThePlugInLeaveNoHeapBehind) {
  const auto* node = NodeDefinition(L"Quillix_fpom");
  ASSERT_NE(node, nullptr);
  for (int i = 0; i < 100; ++i) runCycle(*node, i);  // warm-up: caches and the log's capacity
  TakeLog();
  const std::size_t before = heapBytesInUse();
  constexpr int kCycles = 10000;
  for (int i = 0; i < kCycles; ++i) {
    runCycle(*node, i);
    if (HasFatalFailure()) return;
    if (i % 100 == 0) TakeLog();
  }
  TakeLog();
  const std::size_t after = heapBytesInUse();
  // A leak of even one small block per cycle would show as 10^4 blocks; allow the noise of
  // the log's and the allocator's own bookkeeping.
  EXPECT_LT(after, before + 64 * 1024)
      << "heap grew from " << before << " to " << after << " bytes";
}

TEST(Lifecycle, PathNodeMemoryContextReturnsToZeroWheneverTheMeshIsReleased) {
  const std::vector<Vec3f> points = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
  const std::vector<std::int32_t> description = {0, 1, 2, -1, 0, 2, 3, -1};
  const bool noFlags[1] = {true};
  PathNodeInputs in = {.positions = points, .description = description, .vertexFlags = noFlags};
  std::vector<PathNodeEvent> events;

  PathNodeState node;
  std::vector<std::int32_t> path;
  for (int i = 0; i < 10000; ++i) {
    // Enabled, with a changed mesh: built, searched, kept.
    in.anyEnabled = true;
    if (node.Refresh({.enable = true, .positions = true, .description = true}, 2.0 * i))
      node.Update(in, events);
    ASSERT_TRUE(node.Ready());
    {
      PathScratch scratch(node.Memory());
      const std::int32_t init[] = {1, 3, 0};
      ASSERT_TRUE(ChainPath(node.Geometry(), init, 0, node.VertexFlags(), scratch, path));
    }
    node.EndEvaluate();
    ASSERT_GT(node.Memory().BytesInUse(), 0);
    // Unchanged inputs at the same time: nothing rebuilt, nothing allocated.
    const std::int64_t kept = node.Memory().BytesInUse();
    if (node.Refresh({}, 2.0 * i)) node.Update(in, events);
    node.EndEvaluate();
    ASSERT_EQ(node.Memory().BytesInUse(), kept);
    // Disabled: the mesh and the flags go.
    in.anyEnabled = false;
    if (node.Refresh({.enable = true}, 2.0 * i + 1)) node.Update(in, events);
    node.EndEvaluate();
    ASSERT_EQ(node.Memory().BytesInUse(), 0) << "cycle " << i;
    EXPECT_EQ(node.ReturnValue(), -2);
    events.clear();
  }
}

TEST(Lifecycle, ThousandLoadUnloadCyclesOfThePlugIn) {
  // This test never touches the shared fixture, so each load here really maps the library.
  std::size_t before = 0;
  for (int i = 0; i < 1000; ++i) {
    std::string error;
    auto loaded = xsihost::LoadedPlugin::Load(PluginPath(), error);
    ASSERT_NE(loaded, nullptr) << error;
    ASSERT_EQ(loaded->Record().nodes.size(), 29u);
    ASSERT_EQ(loaded->Record().commands.size(), 2u);
    loaded->Unload();
    loaded.reset();
    const auto lines = TakeLog();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().text, L"Quillix Plugin has been unloaded.");
    if (i == 19) before = heapBytesInUse();
  }
  EXPECT_LT(heapBytesInUse(), before + 64 * 1024);
}

}  // namespace
}  // namespace quillix::test
