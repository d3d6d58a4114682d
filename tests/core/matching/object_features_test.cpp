#include "core/matching/object_features.h"

#include <gtest/gtest.h>

#include <vector>

namespace quillix {
namespace {

// Unit cube [0,1]³ as twelve triangles.
std::vector<Vec3d> UnitCubeCorners() {
  const Vec3d p[8] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                      {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
  const int quads[6][4] = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4},
                           {2, 3, 7, 6}, {1, 2, 6, 5}, {0, 4, 7, 3}};
  std::vector<Vec3d> corners;
  for (const auto& q : quads) {
    for (int i : {q[0], q[1], q[2], q[0], q[2], q[3]}) corners.push_back(p[i]);
  }
  return corners;
}

// Scaling (2, 3, 0.5), then 90° about z (x goes to y, y to -x), then translation
// (10, 20, 30): the rows are the scaled, rotated axes and the translation.
Mat4d SampleTransform() {
  Mat4d t = Mat4d::Identity();
  t.m[0][0] = 0.0;
  t.m[0][1] = 2.0;
  t.m[1][0] = -3.0;
  t.m[1][1] = 0.0;
  t.m[2][2] = 0.5;
  t.m[3][0] = 10.0;
  t.m[3][1] = 20.0;
  t.m[3][2] = 30.0;
  return t;
}

void ExpectNear(const Vec3d& actual, const Vec3d& expected) {
  EXPECT_NEAR(actual.x, expected.x, 1e-12);
  EXPECT_NEAR(actual.y, expected.y, 1e-12);
  EXPECT_NEAR(actual.z, expected.z, 1e-12);
}

TEST(Transform, PointsAreRowsTimesTheMatrixAndDirectionsSkipTranslation) {
  const Mat4d t = SampleTransform();
  ExpectNear(TransformPoint({1.0, 0.0, 0.0}, t), {10.0, 22.0, 30.0});
  ExpectNear(TransformPoint({0.0, 1.0, 2.0}, t), {7.0, 20.0, 31.0});
  ExpectNear(TransformDirection({0.0, 1.0, 2.0}, t), {-3.0, 0.0, 1.0});
}

TEST(SurfaceArea, SumsTrianglesAndFollowsTheTransformScale) {
  const std::vector<Vec3d> cube = UnitCubeCorners();
  EXPECT_NEAR(TriangleSurfaceArea(cube), 6.0, 1e-12);
  // Faces 2×3, 2×0.5 and 3×0.5, twice each; rotation and translation change nothing.
  EXPECT_NEAR(TransformedSurfaceArea(cube, SampleTransform()), 2.0 * (6.0 + 1.0 + 1.5), 1e-12);
  EXPECT_EQ(TriangleSurfaceArea({}), 0.0);
  const std::vector<Vec3d> degenerate = {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}};
  EXPECT_EQ(TriangleSurfaceArea(degenerate), 0.0);
}

TEST(Averages, MeanOfPointsAndDirectionsWithZeroForNoValues) {
  const std::vector<Vec3d> cube = UnitCubeCorners();
  ExpectNear(Average(cube), {0.5, 0.5, 0.5});
  // The centre maps like a point, the mean direction ignores the translation.
  ExpectNear(TransformedPointAverage(cube, SampleTransform()), {10.0 - 1.5, 21.0, 30.25});
  const std::vector<Vec3d> normals = {{0, 0, 1}, {0, 1, 0}};
  ExpectNear(TransformedDirectionAverage(normals, SampleTransform()), {-1.5, 0.0, 0.25});
  ExpectNear(Average({}), {0.0, 0.0, 0.0});
  ExpectNear(TransformedPointAverage({}, SampleTransform()), {0.0, 0.0, 0.0});
}

TEST(NeededFeatures, GlobalFeaturesNeedTheGlobalTransformAndNothingUnweightedIsRead) {
  MatchWeights weights{};
  weights[kTermGlobalVertexCenter] = 0.125f;
  weights[kTermBoundingSphere] = -1.0f;
  const FeatureNeeds needs = NeededFeatures(weights);
  EXPECT_TRUE(needs.triangles && needs.vertexCenter && needs.globalTransform);
  EXPECT_FALSE(needs.localArea || needs.globalArea || needs.localTransform ||
               needs.boundingSphere || needs.localNormals || needs.globalNormals);
}

}  // namespace
}  // namespace quillix
