#include "core/spatial/box_intersect.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/core/spatial/box_fixtures.h"

namespace quillix {
namespace {

using testing::RotationZ;
using testing::Translation;

constexpr std::int32_t kModes[] = {-1, 0, 1};

bool Intersect(const Mat4f& a, const Mat4f& b, std::int32_t mode) {
  return BoxesIntersect(a, b, mode);
}

TEST(BoxesIntersect, TouchingBoxesIntersectAndSeparatedOnesDoNot) {
  const Mat4f origin = Translation({0, 0, 0});
  for (std::int32_t mode : kModes) {
    EXPECT_TRUE(Intersect(origin, origin, mode)) << mode;
    // Faces touching: equal bounds at x = 1 and four corners exactly on the plane x = 1.
    EXPECT_TRUE(Intersect(origin, Translation({2, 0, 0}), mode)) << mode;
    EXPECT_TRUE(Intersect(Translation({0, -2, 0}), origin, mode)) << mode;
    EXPECT_FALSE(Intersect(origin, Translation({2.001f, 0, 0}), mode)) << mode;
    EXPECT_FALSE(Intersect(Translation({0, 0, -2.001f}), origin, mode)) << mode;
  }
}

TEST(BoxesIntersect, FacePlanesRejectWhatTheWorldBoundsCannot) {
  // B turned 45° about Z beside A's corner: the bounds overlap, but in B's space every
  // corner of A lies below x = -1 (the largest at about -1.0607).
  const Mat4f a = Translation({0, 0, 0});
  const Mat4f b = RotationZ(45.0, {1.75f, 1.75f, 0});
  EXPECT_TRUE(Intersect(a, b, -1));
  EXPECT_FALSE(Intersect(a, b, 0));
  EXPECT_FALSE(Intersect(a, b, 1));
  EXPECT_FALSE(Intersect(b, a, 0));
}

TEST(BoxesIntersect, EdgeDiagonalPlanesRejectWhatTheFacePlanesCannot) {
  // A small tilted box beyond the unit box's edge x = y = 1: some of its corners have x < 1
  // and others y < 1, and none of its own faces turns away from the unit box, so only the
  // plane through that edge separates the two.
  const Mat4f unit = Translation({0, 0, 0});
  const Mat4f tilted = testing::Rotation(30.0, 30.0, 0.0, 0.3f, {1.4f, 1.4f, 0});
  ASSERT_LT(testing::SeparatingAxisOverlap<double>(unit, tilted), 0.0);
  EXPECT_TRUE(Intersect(unit, tilted, 0));
  EXPECT_FALSE(Intersect(unit, tilted, 1));
  EXPECT_FALSE(Intersect(tilted, unit, 1));
}

TEST(BoxesIntersect, SingularBoxesSkipTheirOwnLocalTests) {
  // Default all-zero matrices: two points at the origin, both inversions fail.
  for (std::int32_t mode : kModes) EXPECT_TRUE(Intersect(Mat4f{}, Mat4f{}, mode)) << mode;
  // The diamond beside a unit box is rejected only in its own space; flattened (zero Z row)
  // it cannot be inverted, so that test is skipped and the pair passes.
  Mat4f flatDiamond = RotationZ(45.0, {1.75f, 1.75f, 0});
  flatDiamond.m[2][2] = 0.0f;
  EXPECT_TRUE(Intersect(flatDiamond, Translation({0, 0, 0}), 0));
  // A flat box is still tested in the other box's space: beyond its face it is rejected.
  const Mat4f turned = RotationZ(45.0, {0, 0, 0});
  const Mat4f flatBeside = testing::ScaleTranslate({0.1f, 0.1f, 0}, {1.3f, 1.3f, 0});
  EXPECT_TRUE(Intersect(turned, flatBeside, -1));
  EXPECT_FALSE(Intersect(turned, flatBeside, 0));
}

TEST(BoxesIntersect, ProjectiveColumnIsIgnored) {
  Mat4f projective = Translation({2, 0, 0});
  projective.m[1][3] = 0.5f;
  projective.m[3][3] = 3.0f;
  Mat4f farProjective = Translation({2.001f, 0, 0});
  farProjective.m[0][3] = -1.0f;
  for (std::int32_t mode : kModes) {
    EXPECT_TRUE(Intersect(Translation({0, 0, 0}), projective, mode));
    EXPECT_FALSE(Intersect(Translation({0, 0, 0}), farProjective, mode));
  }
}

TEST(BoxesIntersect, PreparedBoxesGiveTheSameAnswers) {
  testing::RandomBoxes boxes(5);
  for (int i = 0; i < 2000; ++i) {
    const EllipsoidRecord a = EllipsoidFromMatrix(boxes.Next());
    const EllipsoidRecord b = EllipsoidFromMatrix(boxes.Next());
    for (std::int32_t mode : kModes) {
      const bool expected = BoxesIntersect(a, b, mode);
      ASSERT_EQ(expected, BoxesIntersect(PrepareBox(a, true), PrepareBox(b, false), mode));
      ASSERT_EQ(expected, BoxesIntersect(PrepareBox(a, false), PrepareBox(b, true), mode));
    }
  }
}

// Whenever two boxes truly intersect, every mode must say so. Pairs are classified by an
// exact separating-axis test in double precision; pairs within 1e-4 of touching are left
// out, since single-precision corners may land on either side of a plane there. The share
// of truly separated pairs that a mode still reports as intersecting is printed.
TEST(BoxesIntersect, IsConservativeAgainstAnExactSeparatingAxisTest) {
  constexpr int kPairs = 200000;
  constexpr double kMargin = 1e-4;
  testing::RandomBoxes boxes(2024);
  int separated = 0;
  int intersecting = 0;
  int falsePositives[3] = {0, 0, 0};
  for (int i = 0; i < kPairs; ++i) {
    const Mat4f ma = boxes.Next();
    const Mat4f mb = boxes.Next();
    const EllipsoidRecord a = EllipsoidFromMatrix(ma);
    const EllipsoidRecord b = EllipsoidFromMatrix(mb);
    const double overlap = testing::SeparatingAxisOverlap<double>(a.matrix, b.matrix);
    if (std::abs(overlap) < kMargin) continue;
    const bool truth = overlap > 0;
    (truth ? intersecting : separated) += 1;
    for (int m = 0; m < 3; ++m) {
      const bool answer = BoxesIntersect(a, b, kModes[m]);
      if (truth) {
        ASSERT_TRUE(answer) << "mode " << kModes[m] << ", pair " << i << ", overlap " << overlap;
      } else if (answer) {
        ++falsePositives[m];
      }
    }
  }
  ASSERT_GT(intersecting, kPairs / 10);
  ASSERT_GT(separated, kPairs / 10);
  for (int m = 0; m < 3; ++m) {
    std::printf(
        "mode %2d: %d intersecting pairs all found; %d of %d separated pairs reported "
        "as intersecting (%.2f%%)\n",
        kModes[m], intersecting, falsePositives[m], separated,
        100.0 * falsePositives[m] / separated);
  }
  // Each stronger mode only adds rejections.
  EXPECT_GE(falsePositives[0], falsePositives[1]);
  EXPECT_GE(falsePositives[1], falsePositives[2]);
}

}  // namespace
}  // namespace quillix
