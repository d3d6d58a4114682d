#include "core/math/mat4_ops.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/core/spatial/box_fixtures.h"

namespace quillix {
namespace {

using testing::AffineMatrix;
using testing::RandomBoxes;

Mat4f Product(const Mat4f& a, const Mat4f& b) {
  Mat4f p;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k) sum += double(a.m[r][k]) * double(b.m[k][c]);
      p.m[r][c] = static_cast<float>(sum);
    }
  }
  return p;
}

TEST(Invert4x4, GivesTheInverseOfGeneralMatrices) {
  RandomBoxes boxes(7);
  for (int trial = 0; trial < 200; ++trial) {
    Mat4f m = boxes.Next();
    // Projective terms too: the inverse is the general one, not an affine shortcut.
    m.m[0][3] = static_cast<float>(boxes.Uniform(-0.3, 0.3));
    m.m[2][3] = static_cast<float>(boxes.Uniform(-0.3, 0.3));
    Mat4f inverse = m;
    ASSERT_TRUE(Invert4x4(inverse));
    const Mat4f identity = Product(m, inverse);
    for (int r = 0; r < 4; ++r) {
      // Thin, sheared boxes are badly conditioned in single precision; a wrong cofactor would
      // be off by order 1.
      for (int c = 0; c < 4; ++c) EXPECT_NEAR(identity.m[r][c], r == c ? 1.0f : 0.0f, 1e-2f);
    }
  }
}

TEST(Invert4x4, InvertsIdentityAndAxisScalesExactly) {
  Mat4f m = testing::ScaleTranslate({3, 1, 1}, {0, 0, 0});
  ASSERT_TRUE(Invert4x4(m));
  EXPECT_EQ(m.m[0][0], 1.0f / 3.0f);
  EXPECT_EQ(m.m[1][1], 1.0f);
  const Mat4f identity = testing::Translation({0, 0, 0});
  Mat4f inverse = identity;
  ASSERT_TRUE(Invert4x4(inverse));
  EXPECT_EQ(0, std::memcmp(&inverse, &identity, sizeof(Mat4f)));
}

TEST(Invert4x4, RefusesExactlySingularMatricesAndLeavesThemUnchanged) {
  const Mat4f flat = AffineMatrix({1, 2, 3}, {2, 4, 6}, {0, 0, 1}, {5, 6, 7});
  const Mat4f zero{};
  for (const Mat4f& singular : {flat, zero}) {
    Mat4f m = singular;
    EXPECT_FALSE(Invert4x4(m));
    EXPECT_EQ(0, std::memcmp(&m, &singular, sizeof(Mat4f)));
  }
  // Tiny but non-zero determinants are inverted.
  Mat4f tiny = testing::ScaleTranslate({1e-10f, 1e-10f, 1e-10f}, {0, 0, 0});
  EXPECT_TRUE(Invert4x4(tiny));
}

TEST(TransformPointProjective, MultipliesTheRowVectorAndDividesByTheFourthComponent) {
  Mat4f m = AffineMatrix({2, 0, 0}, {0, 3, 0}, {0, 0, 4}, {1, 1, 1});
  const Vec3f affine = TransformPointProjective({1, 1, 1}, m);
  EXPECT_EQ(affine.x, 3.0f);
  EXPECT_EQ(affine.y, 4.0f);
  EXPECT_EQ(affine.z, 5.0f);
  m.m[3][3] = 2.0f;  // w = 2
  m.m[0][3] = 1.0f;  // w grows with x
  const Vec3f projective = TransformPointProjective({1, 1, 1}, m);
  EXPECT_EQ(projective.x, 1.0f);
  EXPECT_EQ(projective.y, 4.0f / 3.0f);
  EXPECT_EQ(projective.z, 5.0f / 3.0f);
}

TEST(TransformPoint, IgnoresTheFourthColumnAndDirectionsIgnoreTheTranslation) {
  Mat4d m{{{0, 2, 0, 0.5}, {-3, 0, 0, 0}, {0, 0, 4, 0}, {10, 20, 30, 7}}};
  const Vec3d point = TransformPoint(Vec3d{1, 1, 1}, m);
  EXPECT_EQ(point.x, 7.0);
  EXPECT_EQ(point.y, 22.0);
  EXPECT_EQ(point.z, 34.0);
  const Vec3d direction = TransformDirection(Vec3d{1, 1, 1}, m);
  EXPECT_EQ(direction.x, -3.0);
  EXPECT_EQ(direction.y, 2.0);
  EXPECT_EQ(direction.z, 4.0);
  // On a matrix whose fourth column is (0, 0, 0, 1) the projective map agrees bit for bit.
  const Mat4f affine = testing::Rotation(10.0, 20.0, 30.0, 1.5f, {0.1f, 0.2f, 0.3f});
  const Vec3f p{0.7f, -1.3f, 2.9f};
  const Vec3f a = TransformPoint(p, affine);
  const Vec3f b = TransformPointProjective(p, affine);
  EXPECT_EQ(0, std::memcmp(&a, &b, sizeof(Vec3f)));
}

TEST(Invert4x4, DoublePrecisionGivesTheInverseToo) {
  Mat4d m{{{2, 0, 0, 0}, {0, 0, 4, 0}, {0, -5, 0, 0}, {1, 2, 3, 1}}};
  ASSERT_TRUE(Invert4x4(m));
  const Vec3d back = TransformPoint(Vec3d{3, -23, -13}, m);  // (1, -4, 5) mapped forward
  EXPECT_DOUBLE_EQ(back.x, 1.0);
  EXPECT_DOUBLE_EQ(back.y, -4.0);
  EXPECT_DOUBLE_EQ(back.z, 5.0);
  Mat4d singular{};
  EXPECT_FALSE(Invert4x4(singular));
}

}  // namespace
}  // namespace quillix
