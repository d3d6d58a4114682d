#include "core/spatial/object_spheres.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/math/mat4_ops.h"
#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

// A placement given by a row-vector affine matrix: scaling is the length of each axis row,
// position row 3.
class MatrixTransform final : public ObjectTransform {
 public:
  explicit MatrixTransform(const Mat4d& matrix = Mat4d::Identity()) : matrix_(matrix) {}
  Vec3d Scaling() const override {
    const auto& m = matrix_.m;
    return {Length(Vec3d{m[0][0], m[0][1], m[0][2]}), Length(Vec3d{m[1][0], m[1][1], m[1][2]}),
            Length(Vec3d{m[2][0], m[2][1], m[2][2]})};
  }
  Vec3d Position() const override { return {matrix_.m[3][0], matrix_.m[3][1], matrix_.m[3][2]}; }
  Vec3d MapToWorld(Vec3d p) const override { return TransformPoint(p, matrix_); }

 private:
  Mat4d matrix_;
};

SceneObjectInfo Object(const wchar_t* type, double length = 0, double radius = 0, double size = 0) {
  return {true, type, length, radius, size};
}

// Scaled along the axes, then moved to `position`.
MatrixTransform Placed(Vec3d scaling, Vec3d position) {
  return MatrixTransform(Mat4d{{{scaling.x, 0, 0, 0},
                                {0, scaling.y, 0, 0},
                                {0, 0, scaling.z, 0},
                                {position.x, position.y, position.z, 1}}});
}

std::vector<Sphere> Spheres(const SceneObjectInfo& object, const ObjectTransform& t, double scale,
                            double boneScale) {
  std::vector<Sphere> out;
  const std::size_t count = ObjectToSpheres(object, t, scale, boneScale, &out);
  EXPECT_EQ(count, out.size());
  return out;
}

TEST(ObjectToSpheres, RadiusFollowsTypeParameterAndMeanScaling) {
  const MatrixTransform unit = Placed({1, 1, 1}, {4, 5, 6});
  const auto sphere = Spheres(Object(L"sphere", 0, 2), unit, 1.5, 1);
  ASSERT_EQ(sphere.size(), 1u);
  EXPECT_NEAR(sphere[0].radius, 3.0, 1e-15);
  EXPECT_EQ(sphere[0].x, 4.0);
  EXPECT_EQ(sphere[0].z, 6.0);
  // Scaling (1, 2, 3) has mean 2 (up to the 0.333… multiplier); a cube's length 4 gives 2.
  EXPECT_NEAR(Spheres(Object(L"cube", 4), Placed({1, -2, 3}, {}), 1, 1)[0].radius, 4.0, 1e-15);
  EXPECT_NEAR(Spheres(Object(L"null"), Placed({1, 2, 3}, {}), -2.5, 1)[0].radius, 5.0, 1e-15);
  EXPECT_NEAR(Spheres(Object(L"root", 0, 0, 2), unit, 1, 1)[0].radius, 1.6, 1e-15);
  EXPECT_NEAR(Spheres(Object(L"eff", 0, 0, -2), unit, 1, 1)[0].radius, -1.6, 1e-15);
}

TEST(ObjectToSpheres, BoneGivesATaperingRowFromRootToTip) {
  // Length 2: six spheres at f = 0, 0.2, ... 1, along the bone's X axis from (1, 0, 0).
  const MatrixTransform t = Placed({1, 1, 1}, {1, 0, 0});
  const auto row = Spheres(Object(L"bone", 2, 0, 0.5), t, 1, -2);
  ASSERT_EQ(row.size(), 6u);
  for (int i = 0; i < 6; ++i) {
    const double f = i / 5.0;
    EXPECT_NEAR(row[i].x, 1 + 2 * f, 1e-12);
    EXPECT_NEAR(row[i].radius, (0.333 - f * 0.125) * 0.5 * 2, 1e-12);
  }
  // Length 0.4 rounds to one sphere and is raised to two: root and tip.
  const auto shortBone = Spheres(Object(L"bone", 0.4, 0, 1), t, 1, 1);
  ASSERT_EQ(shortBone.size(), 2u);
  EXPECT_NEAR(shortBone[0].radius, 0.333, 1e-12);
  EXPECT_NEAR(shortBone[1].radius, 0.208, 1e-12);
  EXPECT_NEAR(shortBone[1].x, 1.4, 1e-12);
  // A negative length points the row backwards but counts the same.
  EXPECT_EQ(SphereCount(Object(L"bone", -2)), 6u);
  EXPECT_EQ(SphereCount(Object(L"bone", 0.5)), 2u);  // 1.5 rounds away from zero to 2
  EXPECT_EQ(SphereCount(Object(L"bone", 0.84)), 3u);
  EXPECT_EQ(SphereCount(Object(L"bone", std::nan(""))), 2u);
}

TEST(ObjectToSpheres, CountsWithoutOutputAndNeverShrinksTheGivenArray) {
  SceneObjectInfo missing = Object(L"sphere", 0, 1);
  missing.valid = false;
  std::vector<Sphere> out(10, Sphere{9, 9, 9, 9});
  EXPECT_EQ(ObjectToSpheres(missing, MatrixTransform{}, 1, 1, &out), 0u);
  EXPECT_EQ(ObjectToSpheres(Object(L"bone", 1), MatrixTransform{}, 1, 1, nullptr), 3u);
  EXPECT_EQ(ObjectToSpheres(Object(L"bone", 1), MatrixTransform{}, 1, 1, &out), 3u);
  ASSERT_EQ(out.size(), 10u);
  EXPECT_EQ(out[3].radius, 9.0);  // beyond the count: untouched
  EXPECT_NE(out[2].radius, 9.0);
}

TEST(SpheresOfObjects, ConcatenatesInListOrderAndSkipsMissingObjects) {
  SceneObjectInfo missing = Object(L"sphere", 0, 7);
  missing.valid = false;
  const SceneObjectInfo objects[] = {Object(L"bone", 1, 0, 1), missing, Object(L"sphere", 0, 2)};
  const MatrixTransform first = Placed({1, 1, 1}, {0, 0, 0});
  const MatrixTransform second = Placed({1, 1, 1}, {9, 9, 9});
  const MatrixTransform third = Placed({2, 2, 2}, {0, 5, 0});
  const ObjectTransform* transforms[] = {&first, &second, &third};
  const std::vector<Sphere> spheres = SpheresOfObjects(objects, transforms, 1, 1);
  ASSERT_EQ(spheres.size(), 4u);          // three for the bone, one for the last sphere
  EXPECT_NEAR(spheres[2].x, 1.0, 1e-12);  // the bone's tip
  EXPECT_EQ(spheres[3].y, 5.0);
  EXPECT_NEAR(spheres[3].radius, 4.0, 1e-12);
  EXPECT_TRUE(SpheresOfObjects({}, {}, 1, 1).empty());
}

}  // namespace
}  // namespace quillix
