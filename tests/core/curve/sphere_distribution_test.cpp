#include "core/curve/sphere_distribution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace quillix {
namespace {

using Line = std::vector<Vec3f>;
using Records = CountedArray<SphereRecord>;

float Radius(const SphereRecord& r) { return r.m[0][3]; }
float Scale(const SphereRecord& r) { return r.m[1][3]; }
float RadiusIndex(const SphereRecord& r) { return r.m[2][3]; }
float Corner(const SphereRecord& r) { return r.m[3][3]; }
Vec3f Centre(const SphereRecord& r) { return {r.m[3][0], r.m[3][1], r.m[3][2]}; }
template <class Matrix>
Vec3f Row(const Matrix& r, int i) {
  return {r.m[i][0], r.m[i][1], r.m[i][2]};
}

void ExpectVec(const Vec3f& actual, const Vec3f& expected, float tolerance = 1e-5f) {
  EXPECT_NEAR(actual.x, expected.x, tolerance);
  EXPECT_NEAR(actual.y, expected.y, tolerance);
  EXPECT_NEAR(actual.z, expected.z, tolerance);
}

QRVSpline Spline(const Line& points, bool closed = false) {
  QRVSpline spline;
  EXPECT_EQ(spline.Build(points, {}), kStatusOk);
  spline.SetClosed(closed);
  return spline;
}

SphereDistributionParams Stretch(const std::vector<float>& radii) {
  SphereDistributionParams params;
  params.radii = radii;
  params.cornerThreshold = 0.0f;
  return params;
}

TEST(DistributeSpheres, StretchKeepsRadiiAndSpreadsTheGapsEvenly) {
  const std::vector<float> radii{1.0f};
  QRVSpline ten = Spline({{0, 0, 0}, {10, 0, 0}});
  Records out;
  ASSERT_EQ(DistributeSpheres(ten, Stretch(radii), out), kStatusOk);
  ASSERT_EQ(out.Size(), 5u);
  const float centres[] = {1, 3, 5, 7, 9};
  for (std::size_t i = 0; i < 5; ++i) {
    ExpectVec(Centre(out[i]), {centres[i], 0, 0});
    EXPECT_EQ(Radius(out[i]), 1.0f);
    EXPECT_EQ(Scale(out[i]), 1.0f);
    EXPECT_EQ(RadiusIndex(out[i]), 0.0f);
    EXPECT_EQ(Corner(out[i]), 0.0f);
  }

  QRVSpline nine = Spline({{0, 0, 0}, {9, 0, 0}});
  Records spread;
  ASSERT_EQ(DistributeSpheres(nine, Stretch(radii), spread), kStatusOk);
  ASSERT_EQ(spread.Size(), 4u);
  EXPECT_FLOAT_EQ(Scale(spread[0]), 9.0f / 8.0f);
  for (std::size_t i = 0; i < 4; ++i)
    EXPECT_FLOAT_EQ(Centre(spread[i]).x, (2 * i + 1) * 9.0f / 8.0f);
  EXPECT_EQ(Radius(spread[0]), 1.0f);
}

TEST(DistributeSpheres, NothingFitsOrNothingIsAllowed) {
  const std::vector<float> big{3.0f};
  QRVSpline five = Spline({{0, 0, 0}, {5, 0, 0}});
  Records out;
  EXPECT_EQ(DistributeSpheres(five, Stretch(big), out), kStatusOk);
  EXPECT_EQ(out.Size(), 0u);

  const std::vector<float> small{0.5f};
  SphereDistributionParams none = Stretch(small);
  none.maxSpheres = 0;
  EXPECT_EQ(DistributeSpheres(five, none, out), kStatusOk);
  EXPECT_EQ(out.Size(), 0u);

  SphereDistributionParams two = Stretch(small);
  two.maxSpheres = 2;
  ASSERT_EQ(DistributeSpheres(five, two, out), kStatusOk);
  ASSERT_EQ(out.Size(), 2u);
  EXPECT_FLOAT_EQ(Scale(out[0]), 2.5f);

  // Fractions cut the stretch; a start below 0 counts as 0, an end above 1 as 1.
  SphereDistributionParams half = Stretch(small);
  half.startFraction = 0.5f;
  half.endFraction = 3.0f;
  Records part;
  ASSERT_EQ(DistributeSpheres(five, half, part), kStatusOk);
  ASSERT_EQ(part.Size(), 2u);
  EXPECT_FLOAT_EQ(Centre(part[0]).x, 2.5f + 0.625f);
}

TEST(DistributeSpheres, RejectsBadArgumentsWithStatusCodesAndLeavesTheOutputAlone) {
  const std::vector<float> radii{1.0f, 2.0f};
  QRVSpline spline = Spline({{0, 0, 0}, {10, 0, 0}});
  Records out;
  ASSERT_EQ(DistributeSpheres(spline, Stretch(radii), out), kStatusOk);
  const std::size_t before = out.Size();

  QRVSpline empty;
  EXPECT_EQ(DistributeSpheres(empty, Stretch(radii), out), kStatusInvalidState);
  auto rejects = [&](SphereDistributionParams params, QRVStatus expected) {
    EXPECT_EQ(DistributeSpheres(spline, params, out), expected);
    EXPECT_EQ(out.Size(), before);
  };
  SphereDistributionParams p = Stretch(radii);
  p.seed = -1;
  rejects(p, kStatusIllegalParameter);
  p = Stretch({});
  rejects(p, kStatusIllegalParameter);
  for (float bad : {0.0f, -1.0f, std::nanf("")}) {
    const std::vector<float> withBad{1.0f, bad};
    rejects(Stretch(withBad), kStatusIllegalParameter);
  }
  p = Stretch(radii);
  p.cornerScale = -0.5f;
  rejects(p, kStatusIllegalParameter);
  p = Stretch(radii);
  p.maxSpheres = -1;
  rejects(p, kStatusIllegalParameter);
  p = Stretch(radii);
  p.cornerThreshold = 1.0f;
  p.startFraction = 0.25f;
  rejects(p, kStatusIllegalCombination);
  p.startFraction = 0.0f;
  p.endFraction = 0.75f;
  rejects(p, kStatusIllegalCombination);
}

TEST(RadiusSequence, CyclicStartsAtSeedModCountAndRandomIsTheStandardTwister) {
  RadiusSequence cyclic(kDistributionCyclic, 5, 3);
  EXPECT_EQ(cyclic.Next(), 2u);
  EXPECT_EQ(cyclic.Next(), 0u);
  EXPECT_EQ(cyclic.Next(), 1u);

  RadiusSequence random(kDistributionRandom, 1234, 7);
  std::mt19937 reference(1234);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(random.Next(), reference() % 7);
  // The default-seeded engine's 10000th output is fixed by the standard.
  RadiusSequence standard(kDistributionRandom, 5489, 4294967295u);
  for (int i = 0; i < 9999; ++i) standard.Next();
  EXPECT_EQ(standard.Next(), 4123659995u);

  RadiusSequence constant(7, 99, 5);
  EXPECT_EQ(constant.Next(), 0u);
  EXPECT_EQ(constant.NextSeed(), 0);
}

TEST(DistributeSpheres, RadiusIndicesFollowTheDistribution) {
  const std::vector<float> radii{0.5f, 1.0f, 0.25f};
  QRVSpline spline = Spline({{0, 0, 0}, {40, 0, 0}});
  SphereDistributionParams params = Stretch(radii);
  params.seed = 5;
  Records out;
  ASSERT_EQ(DistributeSpheres(spline, params, out), kStatusOk);
  ASSERT_GE(out.Size(), 4u);
  const float expected[] = {2, 0, 1, 2};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(RadiusIndex(out[i]), expected[i]);
    EXPECT_EQ(Radius(out[i]), radii[std::size_t(expected[i])]);
  }
}

float Determinant(const SphereRecord& r) {
  const Vec3f a = Row(r, 0), b = Row(r, 1), c = Row(r, 2);
  return a.x * (b.y * c.z - b.z * c.y) - a.y * (b.x * c.z - b.z * c.x) +
         a.z * (b.x * c.y - b.y * c.x);
}

TEST(OrientationFrame, AlignsTheMainRowAndTwistsTheSecondTowardsTheOtherVector) {
  const Vec3f tangent{0.6f, 0.0f, 0.8f};
  const Vec3f up{0.0f, 1.0f, 1.0f};
  // Up without its part along the tangent: (0,1,1) - 0.8 * (0.6,0,0.8).
  const float norm = std::sqrt(0.48f * 0.48f + 1.0f + 0.36f * 0.36f);
  const Vec3f upPerpendicular{-0.48f / norm, 1.0f / norm, 0.36f / norm};
  Mat3f frame = OrientationFrame(1, tangent, up);
  ExpectVec(Row(frame, 0), tangent);
  ExpectVec(Row(frame, 1), upPerpendicular);

  const Vec3f unitUp{0.0f, 0.70710677f, 0.70710677f};
  frame = OrientationFrame(2, tangent, up);
  ExpectVec(Row(frame, 1), unitUp);
  const float along = 0.8f * 0.70710677f;  // tangent · unit up
  const Vec3f rest{0.6f, -along * 0.70710677f, 0.8f - along * 0.70710677f};
  const float restNorm = std::sqrt(rest.x * rest.x + rest.y * rest.y + rest.z * rest.z);
  ExpectVec(Row(frame, 0), {rest.x / restNorm, rest.y / restNorm, rest.z / restNorm});

  for (int alignment : {0, 3, -1}) {
    frame = OrientationFrame(alignment, tangent, up);
    ExpectVec(Row(frame, 0), {1, 0, 0}, 0);
    ExpectVec(Row(frame, 1), {0, 1, 0}, 0);
    ExpectVec(Row(frame, 2), {0, 0, 1}, 0);
  }
  // Along the coordinate axes the first rotation falls back to a half turn or none.
  frame = OrientationFrame(1, {-1, 0, 0}, {0, 1, 0});
  ExpectVec(Row(frame, 0), {-1, 0, 0});
  ExpectVec(Row(frame, 1), {0, 1, 0});
  frame = OrientationFrame(2, {1, 0, 0}, {0, -1, 0});
  ExpectVec(Row(frame, 1), {0, -1, 0});
  ExpectVec(Row(frame, 0), {1, 0, 0});
}

TEST(OrientationFrame, FramesAreRotationsForAnyDirections) {
  std::mt19937 engine(3);
  std::uniform_real_distribution<float> c(-1.0f, 1.0f);
  for (int i = 0; i < 500; ++i) {
    const Vec3f t{c(engine), c(engine), c(engine)};
    const Vec3f u{c(engine), c(engine), c(engine)};
    for (int alignment : {1, 2}) {
      const Mat3f frame = OrientationFrame(alignment, t, u);
      SphereRecord record;
      for (int r = 0; r < 3; ++r) {
        record.m[r][0] = Row(frame, r).x;
        record.m[r][1] = Row(frame, r).y;
        record.m[r][2] = Row(frame, r).z;
      }
      EXPECT_NEAR(Determinant(record), 1.0f, 1e-4f);
      // The second row lies in the plane of the two vectors.
      const Vec3f n{t.y * u.z - t.z * u.y, t.z * u.x - t.x * u.z, t.x * u.y - t.y * u.x};
      const Vec3f s = Row(frame, alignment == 1 ? 1 : 0);
      const float nn = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
      EXPECT_NEAR((s.x * n.x + s.y * n.y + s.z * n.z) / nn, 0.0f, 1e-3f);
    }
  }
}

TEST(DistributeSpheres, CornersOfAnOpenSplineGetSpheresThatStayWithinItsEnds) {
  const std::vector<float> radii{1.0f};
  QRVSpline spline = Spline({{0, 0, 0}, {5, 0, 0}, {10, 0, 0}, {10, 10, 0}});
  SphereDistributionParams params;
  params.radii = radii;
  params.cornerThreshold = 0.5f;
  params.cornerScale = 1.5f;
  Records out;
  ASSERT_EQ(DistributeSpheres(spline, params, out), kStatusOk);
  // Corners 0, 2 and 3 (point 1 is on the line); each stretch between corner spheres is 5.5
  // long and takes two unit spheres.
  ASSERT_EQ(out.Size(), 7u);
  const float corner[] = {1, 0, 0, 1, 0, 0, 1};
  for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(Corner(out[i]), corner[i]) << i;
  ExpectVec(Centre(out[0]), {1.5f, 0, 0});
  EXPECT_EQ(Radius(out[0]), 1.5f);
  EXPECT_EQ(Scale(out[0]), 1.0f);
  ExpectVec(Centre(out[3]), {10, 0, 0});
  ExpectVec(Row(out[3], 0), {0.4472136f, 0.8944272f, 0});  // the control point's own tangent
  ExpectVec(Centre(out[6]), {10, 8.5f, 0});
  EXPECT_FLOAT_EQ(Scale(out[1]), 5.5f / 4.0f);
  ExpectVec(Centre(out[1]), {3.0f + 5.5f / 4.0f, 0, 0});
  // Nothing reaches past either end of the spline (arc lengths 0 and 20).
  for (std::size_t i = 0; i < out.Size(); ++i) {
    const Vec3f p = Centre(out[i]);
    const float arc = p.y > 0.0f ? 10.0f + p.y : p.x;
    EXPECT_GE(arc - Radius(out[i]), -1e-5f) << i;
    EXPECT_LE(arc + Radius(out[i]), 20.0f + 1e-5f) << i;
  }
}

TEST(DistributeSpheres, ClosedSplineFillsTheStretchBackToTheFirstCorner) {
  const std::vector<float> radii{1.0f, 0.5f};
  QRVSpline square = Spline({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}}, true);
  SphereDistributionParams params;
  params.radii = radii;
  params.cornerThreshold = 0.5f;
  Records out;
  ASSERT_EQ(DistributeSpheres(square, params, out), kStatusOk);
  std::size_t corners = 0;
  for (std::size_t i = 0; i < out.Size(); ++i) corners += Corner(out[i]) == 1.0f;
  EXPECT_EQ(corners, 4u);
  // Cyclic from seed 0: corner 0 takes index 0, stretch seeds and corners alternate after it.
  EXPECT_EQ(RadiusIndex(out[0]), 0.0f);
  EXPECT_EQ(RadiusIndex(out[1]), 1.0f);  // the first stretch starts at index 1
  // The last spheres lie on the closing side x = 0, between the last corner and the first.
  const Vec3f last = Centre(out[out.Size() - 1]);
  EXPECT_NEAR(last.x, 0.0f, 1e-5f);
  EXPECT_GT(last.y, 0.0f);
  EXPECT_LT(last.y, 10.0f);

  params.maxSpheres = 3;
  Records capped;
  ASSERT_EQ(DistributeSpheres(square, params, capped), kStatusOk);
  EXPECT_EQ(capped.Size(), 3u);
}

TEST(DistributeSpheres, RefusedMemoryReportsStatusNineAndKeepsTheOutput) {
  const std::vector<float> radii{0.001f};
  QRVSpline spline = Spline({{0, 0, 0}, {10, 0, 0}});
  QRVMemoryContext memory;
  memory.SetLimit(true, 4096);
  Records out(&memory);
  EXPECT_EQ(DistributeSpheres(spline, Stretch(radii), out), kStatusNoMemory);
  EXPECT_EQ(out.Size(), 0u);
}

TEST(CutIntervals, EachIndexEndsItsIntervalInclusively) {
  const std::int32_t indices[] = {2, 5};
  const auto intervals = CutIntervals(8, 8, indices);
  ASSERT_EQ(intervals.size(), 2u);
  EXPECT_EQ(intervals[0].first, 0u);
  EXPECT_EQ(intervals[0].count, 3u);
  EXPECT_EQ(intervals[1].first, 3u);
  EXPECT_EQ(intervals[1].count, 3u);

  const std::int32_t whole[] = {-1};
  const auto all = CutIntervals(8, 2, whole);
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].count, 8u);
  EXPECT_EQ(all[0].upCount, 2u);

  // Up vectors are cut within their own count; out-of-order and huge indices stay in range.
  const std::int32_t odd[] = {4, 1, 2147483647};
  const auto cut = CutIntervals(6, 3, odd);
  ASSERT_EQ(cut.size(), 3u);
  EXPECT_EQ(cut[0].count, 5u);
  EXPECT_EQ(cut[0].firstUp, 0u);
  EXPECT_EQ(cut[0].upCount, 3u);
  EXPECT_EQ(cut[1].first, 5u);
  EXPECT_EQ(cut[1].count, 0u);
  EXPECT_EQ(cut[2].first, 2u);
  EXPECT_EQ(cut[2].count, 4u);
  EXPECT_EQ(cut[2].firstUp, 2u);
  EXPECT_EQ(cut[2].upCount, 1u);
}

TEST(DistributeSpheresOverIntervals, IntervalsAreIndependentSplinesInOrder) {
  Line points;
  for (int i = 0; i < 8; ++i) points.push_back({float(i % 3) * 2.0f, float(i / 3) * 100.0f, 0});
  // Intervals 0-2 (y = 0, x 0..4) and 3-5 (y = 100); points 6 and 7 are not used.
  const std::int32_t indices[] = {2, 5};
  const std::vector<float> radii{0.5f};
  SphereDistributionParams params = Stretch(radii);
  std::vector<SphereRecord> out;
  ASSERT_EQ(DistributeSpheresOverIntervals(points, {}, indices, false, params, out), kStatusOk);
  ASSERT_EQ(out.size(), 8u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(Centre(out[i]).y, 0.0f);
  for (std::size_t i = 4; i < 8; ++i) EXPECT_EQ(Centre(out[i]).y, 100.0f);
  ExpectVec(Row(out[0], 1), {0, 1, 0});  // no up vectors: (0, 1, 0)

  // A one-point interval and an element without radii give nothing.
  const std::int32_t single[] = {0};
  std::vector<SphereRecord> none;
  EXPECT_EQ(DistributeSpheresOverIntervals(points, {}, single, false, params, none), kStatusOk);
  EXPECT_EQ(none.size(), 0u);
  SphereDistributionParams noRadii = Stretch({});
  EXPECT_EQ(DistributeSpheresOverIntervals(points, {}, indices, false, noRadii, none), kStatusOk);
  EXPECT_EQ(none.size(), 0u);
}

TEST(DistributeSpheresOverIntervals, ConcurrentCallsGiveTheSameBitsAsOneThread) {
  Line points;
  std::mt19937 engine(17);
  std::uniform_real_distribution<float> step(-1.0f, 1.0f);
  Vec3f p{};
  for (int i = 0; i < 400; ++i) {
    p = {p.x + 1.0f + step(engine), p.y + 2.0f * step(engine), p.z + step(engine)};
    points.push_back(p);
  }
  const std::vector<float> radii{0.2f, 0.35f, 0.1f};
  const std::int32_t whole[] = {-1};
  SphereDistributionParams params;
  params.radii = radii;
  params.distribution = kDistributionRandom;
  params.seed = 42;
  params.interpolation = {kInterpolationCatmullRom, kInterpolationCubic, kInterpolationLinear};
  std::vector<SphereRecord> reference;
  ASSERT_EQ(DistributeSpheresOverIntervals(points, {}, whole, false, params, reference), kStatusOk);
  ASSERT_GT(reference.size(), 100u);
  std::vector<std::vector<SphereRecord>> results(4);
  std::vector<std::thread> threads;
  for (std::vector<SphereRecord>& result : results) {
    threads.emplace_back(
        [&] { DistributeSpheresOverIntervals(points, {}, whole, false, params, result); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::vector<SphereRecord>& result : results) {
    ASSERT_EQ(result.size(), reference.size());
    EXPECT_EQ(std::memcmp(result.data(), reference.data(), reference.size() * sizeof(SphereRecord)),
              0);
  }
}

}  // namespace
}  // namespace quillix
