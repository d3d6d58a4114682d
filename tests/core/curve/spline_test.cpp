#include "core/curve/spline.h"

#include <gtest/gtest.h>

#include <vector>

namespace quillix {
namespace {

using Line = std::vector<Vec3f>;

void ExpectVec(const Vec3f& actual, const Vec3f& expected, float tolerance = 1e-6f) {
  EXPECT_NEAR(actual.x, expected.x, tolerance);
  EXPECT_NEAR(actual.y, expected.y, tolerance);
  EXPECT_NEAR(actual.z, expected.z, tolerance);
}

QRVSpline Build(const Line& points, const Line& ups = {}, bool closed = false) {
  QRVSpline spline;
  EXPECT_EQ(spline.Build(points, ups), kStatusOk);
  spline.SetClosed(closed);
  return spline;
}

constexpr SplineInterpolation kLinear{};
constexpr SplineInterpolation kCubic{kInterpolationCubic, kInterpolationCubic, kInterpolationCubic};
constexpr SplineInterpolation kCatmullRom{kInterpolationCatmullRom, kInterpolationCatmullRom,
                                          kInterpolationCatmullRom};
constexpr SplineInterpolation kStep{0, 0, 0};

TEST(QRVSpline, TangentsSumNeighbouringChordsAndWrapOnlyWhenClosed) {
  const Line square{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
  QRVSpline open = Build(square);
  ExpectVec(open.Point(0).tangent, {1, 0, 0});
  ExpectVec(open.Point(1).tangent, {0.70710677f, 0.70710677f, 0});
  ExpectVec(open.Point(3).tangent, {-1, 0, 0});
  open.SetClosed(true);
  ExpectVec(open.Point(0).tangent, {0.70710677f, -0.70710677f, 0});
  ExpectVec(open.Point(3).tangent, {-0.70710677f, -0.70710677f, 0});
}

TEST(QRVSpline, PointsWithoutDirectionBorrowFromTheNearestPointsThatHaveOne) {
  // Points 1 to 3 coincide: 1 and 3 have one-sided directions; 2 has none of its own.
  QRVSpline spline = Build({{0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 1, 0}});
  ExpectVec(spline.Point(1).tangent, {1, 0, 0});
  ExpectVec(spline.Point(3).tangent, {0, 1, 0});
  ExpectVec(spline.Point(2).tangent, {0.70710677f, 0.70710677f, 0});
  QRVSpline still = Build({{4, 4, 4}, {4, 4, 4}, {4, 4, 4}});
  for (std::size_t i = 0; i < 3; ++i) ExpectVec(still.Point(i).tangent, {1, 0, 0});
}

TEST(QRVSpline, UpVectorsAreNormalisedRepeatedOrDefaulted) {
  QRVSpline spline = Build({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{0, 0, 3}, {0, 0, 0}});
  ExpectVec(spline.Point(0).up, {0, 0, 1});
  ExpectVec(spline.Point(1).up, {0, 1, 0});  // zero length
  ExpectVec(spline.Point(2).up, {0, 1, 0});  // repeats the last given (zero) vector
  QRVSpline bare = Build({{0, 0, 0}, {1, 0, 0}});
  ExpectVec(bare.Point(1).up, {0, 1, 0});
}

TEST(QRVSpline, LengthCountsTheClosingChordOnlyWhenClosed) {
  QRVSpline spline = Build({{0, 0, 0}, {3, 0, 0}, {3, 4, 0}});
  EXPECT_FLOAT_EQ(spline.Length(), 7.0f);
  spline.SetClosed(true);
  EXPECT_FLOAT_EQ(spline.Length(), 12.0f);
  spline.SetClosed(false);
  EXPECT_FLOAT_EQ(spline.Length(), 7.0f);
  EXPECT_FLOAT_EQ(spline.ArcLengthAt(2), 7.0f);
  QRVSpline empty;
  EXPECT_FLOAT_EQ(empty.Length(), 0.0f);
}

TEST(QRVSpline, EvaluationClampsAtTheEndsAndInterpolatesByArcLength) {
  QRVSpline spline = Build({{0, 0, 0}, {3, 0, 0}, {3, 4, 0}}, {{0, 1, 0}, {0, 0, 1}, {0, 0, 1}});
  ExpectVec(spline.Evaluate(-1.0f, kLinear).position, {0, 0, 0});
  ExpectVec(spline.Evaluate(7.0f, kLinear).position, {3, 4, 0});
  ExpectVec(spline.Evaluate(50.0f, kLinear).position, {3, 4, 0});
  const SplineSample mid = spline.Evaluate(1.5f, kLinear);
  ExpectVec(mid.position, {1.5f, 0, 0});
  ExpectVec(mid.up, {0, 0.70710677f, 0.70710677f});
  ExpectVec(spline.Evaluate(5.0f, kLinear).position, {3, 2, 0});
  // Exactly on a vertex belongs to the segment that ends there.
  ExpectVec(spline.Evaluate(3.0f, kLinear).position, {3, 0, 0});
  // Step: the segment's first point, its up vector, and the chord direction as tangent.
  const SplineSample step = spline.Evaluate(5.0f, kStep);
  ExpectVec(step.position, {3, 0, 0});
  ExpectVec(step.tangent, {0, 1, 0});
  ExpectVec(step.up, {0, 0, 1});

  spline.SetClosed(true);
  ExpectVec(spline.Evaluate(12.0f, kLinear).position, {0, 0, 0});
  ExpectVec(spline.Evaluate(9.5f, kLinear).position, {1.5f, 2, 0});  // on the closing chord
}

TEST(QRVSpline, SegmentWithZeroChordReturnsItsFirstPoint) {
  QRVSpline spline = Build({{0, 0, 0}, {0, 0, 0}, {2, 0, 0}}, {{0, 1, 0}, {0, 0, 1}, {0, 1, 0}});
  spline.SetClosed(true);  // lengths 0, 2, 2
  EXPECT_FLOAT_EQ(spline.Length(), 4.0f);
  ExpectVec(spline.Evaluate(1.0f, kLinear).position, {1, 0, 0});
}

TEST(QRVSpline, CubicTypesTakeWrappedNeighboursAlsoWhenOpen) {
  const Line points{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 3, 0}};
  QRVSpline spline = Build(points);
  // First segment at t = 0.5: the neighbour before point 0 is point 3, so the open curve bends
  // towards the far end.
  const Vec3f p0 = points[3], p1 = points[0], p2 = points[1], p3 = points[2];
  const float t = 0.5f;
  auto cubic = [&](float a, float b, float c, float d) {
    const float a3 = d - c - a + b, a2 = a - b - a3, a1 = c - a;
    return a3 * t * t * t + a2 * t * t + a1 * t + b;
  };
  auto catmull = [&](float a, float b, float c, float d) {
    return b + 0.5f * t * ((c - a) + t * ((2 * a - 5 * b + 4 * c - d) + t * (3 * (b - c) + d - a)));
  };
  const Vec3f cubicPosition = spline.Evaluate(0.5f, kCubic).position;
  EXPECT_NEAR(cubicPosition.x, cubic(p0.x, p1.x, p2.x, p3.x), 1e-5f);
  EXPECT_NEAR(cubicPosition.y, cubic(p0.y, p1.y, p2.y, p3.y), 1e-5f);
  EXPECT_NE(cubicPosition.y, 0.0f);
  const Vec3f catmullPosition = spline.Evaluate(0.5f, kCatmullRom).position;
  EXPECT_NEAR(catmullPosition.x, catmull(p0.x, p1.x, p2.x, p3.x), 1e-5f);
  EXPECT_NEAR(catmullPosition.y, catmull(p0.y, p1.y, p2.y, p3.y), 1e-5f);
  // Catmull-Rom passes through the control points.
  ExpectVec(spline.Evaluate(2.0f, kCatmullRom).position, points[2]);
}

TEST(QRVSpline, RefusedMemoryLeavesAnEmptySpline) {
  QRVMemoryContext memory;
  memory.SetLimit(true, 64);
  QRVSpline spline(&memory);
  EXPECT_EQ(spline.Build(Line(100, Vec3f{}), {}), kStatusNoMemory);
  EXPECT_EQ(spline.Count(), 0u);
  EXPECT_EQ(memory.BytesInUse(), 0);
}

}  // namespace
}  // namespace quillix
