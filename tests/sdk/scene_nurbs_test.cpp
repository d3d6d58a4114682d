// Rational NURBS evaluation and arc length against closed forms.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "xsihost/scene_nurbs.h"

namespace xsihost {
namespace {

constexpr double kPi = std::numbers::pi;

// The exact unit circle in the XY plane as a degree-2 rational curve: nine control points on
// the square's corners and edge midpoints, corners weighted √2/2, parameter range [0, 4] with
// one quarter per unit.
NurbsCurveData unitCircle(double radius = 1.0) {
  const double w = std::sqrt(0.5);
  NurbsCurveData c;
  c.degree = 2;
  const double pts[9][3] = {{1, 0, w},   {1, 1, w},  {0, 1, 1},  {-1, 1, w}, {-1, 0, 1},
                            {-1, -1, w}, {0, -1, 1}, {1, -1, w}, {1, 0, 1}};
  for (const auto& p : pts) c.points.push_back({radius * p[0], radius * p[1], 0.0, p[2]});
  c.points.front()[3] = 1.0;
  c.knots = {0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4};
  c.closed = true;
  return c;
}

double len(const Vec3d& v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }
double dotp(const Vec3d& a, const Vec3d& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

TEST(NurbsCircle, EveryPositionLiesOnTheCircleWithUnitTangentPerpendicularToTheRadius) {
  const NurbsCurveData data = unitCircle(2.0);
  ASSERT_EQ(ValidateNurbsCurve(data), "");
  const NurbsCurveEvaluator curve(data);
  for (int i = 0; i <= 400; ++i) {
    const double u = 4.0 * i / 400.0;
    const CurveSample s = curve.Evaluate(u);
    EXPECT_NEAR(len(s.position), 2.0, 1e-12) << "u=" << u;
    EXPECT_NEAR(s.position[2], 0.0, 1e-15);
    const double tangentLength = len(s.tangent);
    ASSERT_GT(tangentLength, 0.0);
    EXPECT_NEAR(dotp(s.tangent, s.position) / tangentLength, 0.0, 1e-12) << "u=" << u;
    // Counter-clockwise: the normal points to the centre, the binormal along +Z.
    EXPECT_NEAR(s.normal[0], -s.position[0] / 2.0, 1e-9);
    EXPECT_NEAR(s.normal[1], -s.position[1] / 2.0, 1e-9);
    EXPECT_NEAR(s.binormal[2], 1.0, 1e-9);
  }
}

TEST(NurbsCircle, ArcLengthIsTheCircumferenceAndPercentagesAreTurns) {
  const NurbsCurveEvaluator curve(unitCircle(1.5));
  EXPECT_NEAR(curve.Length(), 2.0 * kPi * 1.5, 1e-9 * 2.0 * kPi * 1.5);
  // By symmetry 25 % of the length ends exactly at the quarter turn, parameter 1.
  const CurveSample quarter = curve.Evaluate(curve.ParameterFromPercentage(25.0));
  EXPECT_NEAR(quarter.position[0], 0.0, 1e-9);
  EXPECT_NEAR(quarter.position[1], 1.5, 1e-9);
  EXPECT_NEAR(curve.ParameterFromPercentage(50.0), 2.0, 1e-9);
  // Anywhere else the reached angle is the percentage of a full turn, to 1e-6 relative.
  for (double pct : {0.01, 3.0, 12.5, 33.3, 61.0, 99.9}) {
    const CurveSample s = curve.Evaluate(curve.ParameterFromPercentage(pct));
    double angle = std::atan2(s.position[1], s.position[0]);
    if (angle < 0.0) angle += 2.0 * kPi;
    EXPECT_NEAR(angle, pct / 100.0 * 2.0 * kPi, 1e-6 * pct / 100.0 * 2.0 * kPi) << pct;
  }
  EXPECT_EQ(curve.ParameterFromPercentage(-5.0), 0.0);
  EXPECT_EQ(curve.ParameterFromPercentage(150.0), 4.0);
}

TEST(NurbsCircle, NormalizedParameterMapsTheRangeLinearly) {
  NurbsCurveData data = unitCircle();
  for (double& k : data.knots) k = 10.0 + 2.0 * k;  // range [10, 18]
  const NurbsCurveEvaluator curve(data);
  EXPECT_DOUBLE_EQ(curve.ParameterFromNormalized(0.0), 10.0);
  EXPECT_DOUBLE_EQ(curve.ParameterFromNormalized(0.25), 12.0);
  EXPECT_DOUBLE_EQ(curve.ParameterFromNormalized(1.0), 18.0);
  EXPECT_DOUBLE_EQ(curve.ParameterFromNormalized(7.0), 18.0);
}

TEST(NurbsCircle, NonFiniteParametersAreClampedIntoTheRange) {
  NurbsCurveData data = unitCircle();
  for (double& k : data.knots) k = 10.0 + 2.0 * k;  // range [10, 18]
  const NurbsCurveEvaluator curve(data);
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // Infinities go to the ends like any value beyond them; NaN counts as the start.
  EXPECT_EQ(curve.Evaluate(-inf).position, curve.Evaluate(10.0).position);
  EXPECT_EQ(curve.Evaluate(inf).position, curve.Evaluate(18.0).position);
  EXPECT_EQ(curve.Evaluate(nan).position, curve.Evaluate(10.0).position);
  EXPECT_EQ(curve.ParameterFromNormalized(nan), 10.0);
  EXPECT_EQ(curve.ParameterFromNormalized(inf), 18.0);
}

TEST(NurbsCurve, DerivativesMatchFiniteDifferencesOnAnUnevenRationalCubic) {
  NurbsCurveData c;
  c.degree = 3;
  c.points = {{0, 0, 0, 1},   {1, 2, 0, 2}, {3, 3, 1, 0.5},
              {4, 0, 2, 1.5}, {6, 1, 0, 1}, {7, 3, 1, 1}};
  c.knots = {0, 0, 0, 0, 0.3, 1.1, 2, 2, 2, 2};
  ASSERT_EQ(ValidateNurbsCurve(c), "");
  const NurbsCurveEvaluator curve(c);
  const double h = 1e-5;
  for (double u : {0.05, 0.3, 0.7, 1.1, 1.5, 1.95}) {
    Vec3d p, d1, d2, pa, pb, da, db, unused;
    curve.Derivatives(u, p, d1, d2);
    curve.Derivatives(u - h, pa, da, unused);
    curve.Derivatives(u + h, pb, db, unused);
    for (int k = 0; k < 3; ++k) {
      EXPECT_NEAR(d1[k], (pb[k] - pa[k]) / (2 * h), 1e-5 * (1 + std::fabs(d1[k]))) << u;
      EXPECT_NEAR(d2[k], (db[k] - da[k]) / (2 * h), 1e-4 * (1 + std::fabs(d2[k]))) << u;
    }
  }
  // Clamped ends interpolate the end points.
  const CurveSample start = curve.Evaluate(-1.0), end = curve.Evaluate(5.0);
  EXPECT_NEAR(start.position[0], 0.0, 1e-15);
  EXPECT_NEAR(end.position[0], 7.0, 1e-12);
  EXPECT_NEAR(end.position[1], 3.0, 1e-12);
}

TEST(NurbsCurve, StraightLineLengthAndAPerpendicularFrame) {
  NurbsCurveData c;
  c.degree = 1;
  c.points = {{0, 0, 0, 1}, {3, 4, 0, 1}, {6, 8, 0, 1}};
  c.knots = {0, 0, 0.2, 1, 1};  // uneven speed on the two halves
  const NurbsCurveEvaluator curve(c);
  EXPECT_NEAR(curve.Length(), 10.0, 1e-12);
  EXPECT_NEAR(curve.ParameterFromPercentage(50.0), 0.2, 1e-12);
  EXPECT_NEAR(curve.ParameterFromPercentage(75.0), 0.6, 1e-12);
  const CurveSample s = curve.Evaluate(0.5);
  EXPECT_NEAR(len(s.normal), 1.0, 1e-12);
  EXPECT_NEAR(dotp(s.normal, s.tangent), 0.0, 1e-12);
  EXPECT_NEAR(len(s.binormal), 1.0, 1e-12);
}

TEST(NurbsCurve, PercentagesCrossSpansOfDifferentLengthsOnAPolyline) {
  // Segments of lengths 3, 4 and 5 with equal parameter spans: the arc length is not
  // proportional to the parameter, and 50 % (length 6) lies 3/4 of the way through span 2.
  NurbsCurveData c;
  c.degree = 1;
  c.points = {{0, 0, 0, 1}, {3, 0, 0, 1}, {3, 4, 0, 1}, {3, 4, 5, 1}};
  c.knots = {0, 0, 1, 2, 3, 3};
  const NurbsCurveEvaluator curve(c);
  EXPECT_NEAR(curve.Length(), 12.0, 1e-12);
  EXPECT_NEAR(curve.ParameterFromPercentage(25.0), 1.0, 1e-12);
  EXPECT_NEAR(curve.ParameterFromPercentage(50.0), 1.75, 1e-12);
  EXPECT_NEAR(curve.ParameterFromPercentage(75.0), 2.0 + 2.0 / 5.0, 1e-12);
  const CurveSample s = curve.Evaluate(curve.ParameterFromPercentage(50.0));
  EXPECT_NEAR(s.position[1], 3.0, 1e-12);
  // On a straight span the frame is still orthonormal.
  EXPECT_NEAR(dotp(s.normal, s.binormal), 0.0, 1e-15);
  EXPECT_NEAR(dotp(s.normal, s.tangent), 0.0, 1e-15);
}

TEST(NurbsValidation, NamesWhatIsWrong) {
  NurbsCurveData c = unitCircle();
  c.knots.pop_back();
  EXPECT_NE(ValidateNurbsCurve(c).find("need 12 knots, not 11"), std::string::npos);
  c = unitCircle();
  c.knots[5] = 0.5;
  EXPECT_NE(ValidateNurbsCurve(c).find("knot 5"), std::string::npos);
  c = unitCircle();
  c.points[3][3] = 0.0;
  EXPECT_NE(ValidateNurbsCurve(c).find("control point 3"), std::string::npos);
  c = unitCircle();
  c.knots = {0, 0, 0, 1, 1, 1, 2, 2, 3, 4, 4, 4};
  EXPECT_NE(ValidateNurbsCurve(c).find("repeated 3 times"), std::string::npos);
  c = unitCircle();
  c.degree = 0;
  EXPECT_NE(ValidateNurbsCurve(c), "");
  c = unitCircle();
  c.points.resize(2);
  c.knots = {0, 0, 0, 1, 1};
  EXPECT_NE(ValidateNurbsCurve(c).find("at least 3 control points"), std::string::npos);
}

}  // namespace
}  // namespace xsihost
