// Quillix_iotmb through the offline host: contact times from packed matrices, subdivision,
// batches and threads.
#include <gtest/gtest.h>

#include <vector>

#include "tests/nodes/spatial/matrix_pair_fixtures.h"

namespace quillix::test {
namespace {

constexpr const wchar_t* kNode = L"Quillix_iotmb";

// A unit box at `at` moving by `velocity` over the step, with a subdivision count.
CMatrix4f Moving(Vec3f at, Vec3f velocity, float subdivisions = 0.0f) {
  CMatrix4f m = HostTranslation(at);
  m.SetValue(0, 3, velocity.x);
  m.SetValue(1, 3, velocity.y);
  m.SetValue(2, 3, velocity.z);
  m.SetValue(3, 3, subdivisions);
  return m;
}

TEST(IotmbNode, MovingBoxesGiveContactTimes) {
  const CMatrix4f resting = HostTranslation({0, 0, 0});
  const Matrices movers{Moving({5, 0, 0}, {-10, 0, 0}), Moving({5, 0, 0}, {10, 0, 0}),
                        Moving({5, 0, 0}, {-2, 0, 0}), resting};
  const auto out = Evaluate(kNode,
                            PairRequest(PortValues::Singles(Matrices{resting}),
                                        PortValues::ArraysOf(std::vector<Matrices>{movers}), 1),
                            kResultPort);
  EXPECT_EQ(out.values.ArrayAt<float>(0), (std::vector<float>{0.5f, -1.0f, 2.5f, 0.0f}));
  // Head-on along one line: missed directly, found at the first overlapping sub-step when the
  // two counts (2 and 3) round to depth 3.
  const auto headOn = [](float countA, float countB) {
    return Evaluate(
        kNode,
        PairRequest(PortValues::Singles(Matrices{Moving({-5, 0, 0}, {10, 0, 0}, countA)}),
                    PortValues::Singles(Matrices{Moving({5, 0, 0}, {-10, 0, 0}, countB)}), 1),
        kResultPort);
  };
  EXPECT_EQ(Singles<float>(headOn(0, 0)), (std::vector<float>{-1.0f}));
  EXPECT_EQ(Singles<float>(headOn(2, 3)), (std::vector<float>{0.5f}));
}

TEST(IotmbNode, WritesOnlyTheBatchAndNothingForUnknownPortsOrFailedQueries) {
  ExpectWritesOnlyTheBatchAndNothingOnFailedQueries(kNode);
}

TEST(IotmbNode, ManyThreadsGiveTheSingleThreadedResults) {
  ExpectManyThreadsGiveTheSingleThreadedResults(kNode);
}

}  // namespace
}  // namespace quillix::test
