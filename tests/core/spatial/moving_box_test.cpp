#include "core/spatial/moving_box.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/core/spatial/box_fixtures.h"

namespace quillix {
namespace {

using testing::Translation;

// A unit box at `centre` packed with `velocity` and `subdivisions`.
Mat4f Packed(Vec3f centre, Vec3f velocity, float subdivisions = 0.0f) {
  Mat4f m = Translation(centre);
  m.m[0][3] = velocity.x;
  m.m[1][3] = velocity.y;
  m.m[2][3] = velocity.z;
  m.m[3][3] = subdivisions;
  return m;
}

float Contact(const Mat4f& a, const Mat4f& b, std::int32_t mode = 1) {
  return BoxesContactTime(PrepareMovingBox(MovingBoxFromMatrix(a), true),
                          PrepareMovingBox(MovingBoxFromMatrix(b), false), mode);
}

TEST(MovingBoxFromMatrix, ReadsVelocityAndCountBeforeForcingTheAffineColumn) {
  const MovingBox box = MovingBoxFromMatrix(Packed({1, 2, 3}, {4, 5, 6}, 7));
  EXPECT_EQ(box.velocity.x, 4.0f);
  EXPECT_EQ(box.velocity.z, 6.0f);
  EXPECT_EQ(box.subdivisions, 7.0f);
  EXPECT_EQ(box.box.matrix.m[0][3], 0.0f);
  EXPECT_EQ(box.box.matrix.m[3][3], 1.0f);
  EXPECT_EQ(box.box.centre.y, 2.0f);
}

TEST(SubdivisionDepth, RoundsTheMeanHalfAwayFromZero) {
  EXPECT_EQ(SubdivisionDepth(2, 3), 3);
  EXPECT_EQ(SubdivisionDepth(1, 0), 1);
  EXPECT_EQ(SubdivisionDepth(0.9f, 0), 0);
  EXPECT_EQ(SubdivisionDepth(-2, -3), -3);
  EXPECT_EQ(SubdivisionDepth(0, 0), 0);
  EXPECT_EQ(SubdivisionDepth(3e38f, 3e38f), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(SubdivisionDepth(-1e20f, 0), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(SubdivisionDepth(std::nanf(""), 1), 0);
}

TEST(ClosestLineParameters, GivesDistancesToTheMutuallyClosestPoints) {
  // Line 1 along X through the origin, line 2 along Y through (3, -4, 1), speeds ignored.
  const LineParameters skew = ClosestLineParameters({0, 0, 0}, {2, 0, 0}, {3, -4, 1}, {0, 5, 0});
  EXPECT_FLOAT_EQ(skew.t1, 3.0f);
  EXPECT_FLOAT_EQ(skew.t2, 4.0f);
  const LineParameters parallel =
      ClosestLineParameters({0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-3, 0, 0});
  EXPECT_EQ(parallel.t1, 0.0f);
  EXPECT_EQ(parallel.t2, 0.0f);
  const LineParameters degenerate =
      ClosestLineParameters({0, 0, 0}, {0, 0, 0}, {0, 1, 0}, {1, 0, 0});
  EXPECT_EQ(degenerate.t1, 0.0f);
  EXPECT_EQ(degenerate.t2, 0.0f);
}

TEST(BoxesContactTime, OneMovingBoxIsTestedWhereItPassesNearestTheOther) {
  EXPECT_EQ(Contact(Translation({0, 0, 0}), Packed({5, 0, 0}, {-10, 0, 0})), 0.5f);
  EXPECT_EQ(Contact(Packed({5, 0, 0}, {-10, 0, 0}), Translation({0, 0, 0})), 0.5f);
  EXPECT_EQ(Contact(Translation({0, 0, 0}), Packed({5, 0, 0}, {10, 0, 0})), -1.0f);  // moving away
  EXPECT_EQ(Contact(Translation({0, 0, 0}), Packed({5, 0, 0}, {-2, 0, 0})), 2.5f);   // not clamped
  // Passing by at a distance: the nearest approach is tested and misses.
  EXPECT_EQ(Contact(Translation({0, 0, 0}), Packed({5, 3, 0}, {-10, 0, 0})), -1.0f);
  EXPECT_EQ(Contact(Translation({0, 0, 0}), Translation({5, 0, 0})), -1.0f);  // nothing moves
}

TEST(BoxesContactTime, IsZeroWhenTheBoxesAlreadyIntersect) {
  EXPECT_EQ(Contact(Packed({0, 0, 0}, {9, 9, 9}), Packed({1, 0, 0}, {-9, 3, 0}, 4)), 0.0f);
  EXPECT_EQ(Contact(Mat4f{}, Mat4f{}), 0.0f);  // default matrices: two points at the origin
}

TEST(BoxesContactTime, DirectMethodTestsTheTimeOfClosestPassage) {
  // Head-on along one line: parallel paths give time 0, which repeats the failed start test.
  EXPECT_EQ(Contact(Packed({-5, 0, 0}, {10, 0, 0}), Packed({5, 0, 0}, {-10, 0, 0})), -1.0f);
  // Crossing paths: A along X from (-4, 0, 0), B along Y from (0, -8, 0), twice as fast;
  // both centres reach the origin at time 0.5.
  EXPECT_FLOAT_EQ(Contact(Packed({-4, 0, 0}, {8, 0, 0}), Packed({0, -8, 0}, {0, 16, 0})), 0.5f);
  // Paths that crossed behind both boxes.
  EXPECT_EQ(Contact(Packed({4, 0, 0}, {8, 0, 0}), Packed({0, 8, 0}, {0, 16, 0})), -1.0f);
}

TEST(BoxesContactTime, SubdivisionFindsHeadOnContactAtTheFirstTouchingSubStep) {
  // Depth (2 + 3) / 2 = 2.5 → 3: four sub-steps of 0.25. The boxes first touch at time 0.4;
  // head-on paths are parallel, so no sub-step's direct method sees it, and the first
  // sub-step whose start already overlaps (0.5) is reported.
  const float t = Contact(Packed({-5, 0, 0}, {10, 0, 0}, 2), Packed({5, 0, 0}, {-10, 0, 0}, 3));
  EXPECT_EQ(t, 0.5f);
  // With depth 1 (two sub-steps of 0.5) the start of the second sub-step is already past
  // contact and overlapping, and is reported.
  EXPECT_EQ(Contact(Packed({-5, 0, 0}, {10, 0, 0}, 1), Packed({5, 0, 0}, {-10, 0, 0}, 1)), 0.5f);
  // Depth counts below 1 fall back to the direct method.
  EXPECT_EQ(Contact(Packed({-5, 0, 0}, {10, 0, 0}, 0.4f), Packed({5, 0, 0}, {-10, 0, 0})), -1.0f);
}

TEST(BoxesContactTime, RecordsPreparedBoxesAndMatricesAgree) {
  testing::RandomBoxes boxes(9, 4.0f);
  for (int i = 0; i < 1000; ++i) {
    Mat4f a = boxes.Next();
    Mat4f b = boxes.Next();
    for (int r = 0; r < 3; ++r) {
      a.m[r][3] = static_cast<float>(boxes.Uniform(-6, 6));
      b.m[r][3] = static_cast<float>(boxes.Uniform(-6, 6));
    }
    a.m[3][3] = static_cast<float>(i % 4);
    b.m[3][3] = 0.0f;
    const MovingBox ma = MovingBoxFromMatrix(a);
    const MovingBox mb = MovingBoxFromMatrix(b);
    const float expected = BoxesContactTime(ma.box, ma.velocity, mb.box, mb.velocity, 1,
                                            SubdivisionDepth(a.m[3][3], 0));
    ASSERT_EQ(expected, Contact(a, b));
    ASSERT_EQ(expected, BoxesContactTime(a, b, 1));
    ASSERT_TRUE(expected == -1.0f || expected >= 0.0f);
  }
}

}  // namespace
}  // namespace quillix
