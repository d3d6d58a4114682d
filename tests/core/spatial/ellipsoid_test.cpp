#include "core/spatial/ellipsoid.h"

#include <gtest/gtest.h>

#include "tests/core/spatial/box_fixtures.h"

namespace quillix {
namespace {

using testing::AffineMatrix;
using testing::ScaleTranslate;

float Gap(const Mat4f& a, const Mat4f& b) { return EllipsoidDistance(a, b); }

TEST(EllipsoidFromMatrix, SplitsScaleAxesAndCentreAndDropsProjectiveTerms) {
  Mat4f m = AffineMatrix({0, 3, 0}, {-2, 0, 0}, {0, 0, 0}, {1, 2, 3});
  m.m[0][3] = 0.5f;
  m.m[3][3] = 7.0f;
  const EllipsoidRecord r = EllipsoidFromMatrix(m);
  EXPECT_EQ(r.scale.x, 3.0f);
  EXPECT_EQ(r.scale.y, 2.0f);
  EXPECT_EQ(r.scale.z, 0.0f);
  EXPECT_EQ(r.axisX.y, 1.0f);
  EXPECT_EQ(r.axisY.x, -1.0f);
  EXPECT_EQ(r.axisZ.x, 0.0f);  // a zero row gives a zero axis, not NaN
  EXPECT_EQ(r.axisZ.y, 0.0f);
  EXPECT_EQ(r.axisZ.z, 0.0f);
  EXPECT_EQ(r.centre.z, 3.0f);
  const Mat4f expected = AffineMatrix({0, 3, 0}, {-2, 0, 0}, {0, 0, 0}, {1, 2, 3});
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      EXPECT_EQ(r.matrix.m[row][column], expected.m[row][column]) << row << "," << column;
    }
  }
}

TEST(EllipsoidDistance, SubtractsBothHalfChordsAlongTheCentreLine) {
  EXPECT_EQ(Gap(ScaleTranslate({1, 1, 1}, {0, 0, 0}), ScaleTranslate({1, 1, 1}, {5, 0, 0})), 3.0f);
  // Stretched 3× along X: its half-chord is 3 towards +X and 1 towards +Y.
  const Mat4f stretched = ScaleTranslate({3, 1, 1}, {0, 0, 0});
  EXPECT_EQ(Gap(stretched, ScaleTranslate({1, 1, 1}, {10, 0, 0})), 6.0f);
  EXPECT_EQ(Gap(stretched, ScaleTranslate({1, 1, 1}, {0, 10, 0})), 8.0f);
  // The order of the two ellipsoids does not matter.
  EXPECT_EQ(Gap(ScaleTranslate({1, 1, 1}, {0, 10, 0}), stretched), 8.0f);
  // Rotated (45° about Z) and sheared ellipsoids along a diagonal stay close to the exact gap.
  const Mat4f rotated = testing::RotationZ(45.0, {0, 0, 0});
  EXPECT_NEAR(Gap(rotated, ScaleTranslate({2, 2, 2}, {0, 0, 7})), 4.0f, 1e-5f);
}

TEST(EllipsoidDistance, IsZeroOnContactOverlapAndCoincidentCentres) {
  EXPECT_EQ(Gap(ScaleTranslate({2, 2, 2}, {0, 0, 0}), ScaleTranslate({1, 1, 1}, {2.5f, 0, 0})),
            0.0f);
  // B's centre exactly on A's surface (|q|² = 1), and A's centre inside a large B.
  EXPECT_EQ(
      Gap(ScaleTranslate({1, 1, 1}, {0, 0, 0}), ScaleTranslate({0.1f, 0.1f, 0.1f}, {1, 0, 0})),
      0.0f);
  EXPECT_EQ(
      Gap(ScaleTranslate({0.1f, 0.1f, 0.1f}, {0, 0, 0}), ScaleTranslate({9, 9, 9}, {5, 0, 0})),
      0.0f);
  // Default all-zero matrices: both centres at the origin.
  EXPECT_EQ(Gap(Mat4f{}, Mat4f{}), 0.0f);
}

TEST(EllipsoidDistance, IgnoresProjectiveTermsAndToleratesSingularMatrices) {
  Mat4f projective = ScaleTranslate({1, 1, 1}, {0, 0, 0});
  projective.m[0][3] = 0.25f;
  projective.m[3][3] = 4.0f;
  EXPECT_EQ(Gap(projective, ScaleTranslate({1, 1, 1}, {5, 0, 0})), 3.0f);
  // A flat ellipsoid (zero Z row) cannot be inverted; its forward matrix stands in, which
  // still yields a defined, non-negative gap.
  const float flat =
      Gap(ScaleTranslate({1, 1, 0}, {0, 0, 0}), ScaleTranslate({1, 1, 1}, {5, 0, 0}));
  EXPECT_GE(flat, 0.0f);
  EXPECT_LE(flat, 4.0f);
}

}  // namespace
}  // namespace quillix
