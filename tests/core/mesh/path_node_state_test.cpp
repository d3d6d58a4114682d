// The path node's state machine without a host: when it rebuilds, what it reports, and what
// it keeps between evaluations.
#include <gtest/gtest.h>

#include <vector>

#include "core/mesh/path_node_state.h"
#include "kernel/status_codes.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

using Kind = PathNodeEvent::Kind;

// A 3 × 3 grid as the node's inputs: positions and a description closed by negative values.
struct GridInputs {
  GridInputs() {
    const testing::PlainMesh grid = testing::QuadGrid(2, 2);
    positions = grid.positions;
    for (std::size_t p = 0; p < grid.sizes.size(); ++p) {
      for (int k = 0; k < 4; ++k) description.push_back(grid.indices[p * 4 + k]);
      description.push_back(-2);
    }
  }
  PathNodeInputs Inputs(std::int32_t verbose, std::span<const bool> flags = {}) const {
    return {.anyEnabled = true,
            .verbose = verbose,
            .positions = positions,
            .description = description,
            .vertexFlags = flags};
  }
  std::vector<Vec3f> positions;
  std::vector<std::int32_t> description;
};

std::vector<Kind> KindsOf(const std::vector<PathNodeEvent>& events) {
  std::vector<Kind> kinds;
  for (const PathNodeEvent& e : events) kinds.push_back(e.kind);
  return kinds;
}

TEST(PathNodeState, FirstBeginBuildsAndReportsByVerboseLevelThenNothingUntilAChange) {
  const GridInputs grid;
  PathNodeState state;
  EXPECT_EQ(state.ReturnValue(), -2);
  ASSERT_TRUE(state.Refresh({}, 3.0));  // the first time always runs
  std::vector<PathNodeEvent> events;
  state.Update(grid.Inputs(2), events);
  EXPECT_EQ(KindsOf(events),
            (std::vector<Kind>{Kind::kVerboseTime, Kind::kBuildTime, Kind::kVertexCount,
                               Kind::kPolygonCount, Kind::kTotalTime}));
  EXPECT_EQ(events[0].time, 3.0);
  EXPECT_EQ(events[2].count, 9);
  EXPECT_EQ(events[3].count, 4);
  EXPECT_TRUE(state.Ready());
  EXPECT_EQ(state.ReturnValue(), 0);
  EXPECT_EQ(state.CurrentFrame(), 3);
  EXPECT_TRUE(state.WholeFrame());
  state.EndEvaluate();

  // Same time, nothing changed: no update. A new time or an algorithm change: no rebuild.
  EXPECT_FALSE(state.Refresh({}, 3.0));
  ASSERT_TRUE(state.Refresh({.algorithm = true}, 3.0));
  events.clear();
  state.Update(grid.Inputs(1), events);
  EXPECT_EQ(KindsOf(events), (std::vector<Kind>{Kind::kVerboseTime, Kind::kTotalTime}));
  const std::int64_t built = state.Memory().BytesInUse();
  // Disabled: the mesh goes at the end of the evaluation.
  ASSERT_TRUE(state.Refresh({.enable = true}, 4.0));
  events.clear();
  state.Update({.anyEnabled = false}, events);
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(state.ReturnValue(), -2);
  EXPECT_EQ(state.Memory().BytesInUse(), built);
  state.EndEvaluate();
  EXPECT_EQ(state.Memory().BytesInUse(), 0);
}

TEST(PathNodeState, FlagsOfTheWrongSizeAreReportedAndIgnoredABuildFailureDisables) {
  const GridInputs grid;
  PathNodeState state;
  const bool seven[7] = {true, true, true, true, true, true, true};
  ASSERT_TRUE(state.Refresh({}, 1.0));
  std::vector<PathNodeEvent> events;
  state.Update(grid.Inputs(0, seven), events);
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].kind, Kind::kFlagSizeMismatch);
  EXPECT_EQ(events[0].count, 7);
  EXPECT_EQ(events[0].expected, 9);
  EXPECT_EQ(state.VertexFlags(), nullptr);
  // The single default value means no flags, silently.
  const bool one[1] = {true};
  ASSERT_TRUE(state.Refresh({.vertexFlags = true}, 1.0));
  events.clear();
  state.Update(grid.Inputs(0, one), events);
  EXPECT_TRUE(events.empty());

  // A polygon of exactly 255 corners: 101, the node disables itself until an input changes.
  GridInputs big = grid;
  big.positions.resize(300);
  big.description.clear();
  for (int v = 0; v < 255; ++v) big.description.push_back(v);
  big.description.push_back(-1);
  ASSERT_TRUE(state.Refresh({.positions = true}, 1.0));
  events.clear();
  state.Update(big.Inputs(0), events);
  ASSERT_EQ(KindsOf(events), (std::vector<Kind>{Kind::kBuildFailed, Kind::kFailed}));
  EXPECT_EQ(events[1].status, kStatusPolygonTooLarge);
  EXPECT_EQ(state.ReturnValue(), -2);
  EXPECT_FALSE(state.Ready());
  state.EndEvaluate();
  EXPECT_FALSE(state.Refresh({}, 1.0));
}

TEST(PathNodeTimer, FormatsRoundedMillisecondsWithASignSpaceInSixColumns) {
  EXPECT_EQ(PathNodeTimer::Format(0.4), "     0 ms");
  EXPECT_EQ(PathNodeTimer::Format(12.5), "    13 ms");
  EXPECT_EQ(PathNodeTimer::Format(1234567.0), " 1234567 ms");
}

}  // namespace
}  // namespace quillix
