#include "core/curve/point_on_curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace quillix {
namespace {

TEST(CurveQueryValue, ClampsFromBelowInEveryModeAndScalesPercentages) {
  EXPECT_EQ(CurveQueryValue(0.0f, CurveParameterMode::Parameter), 1e-6);
  EXPECT_EQ(CurveQueryValue(-5.0f, CurveParameterMode::Normalized), 1e-6);
  EXPECT_EQ(CurveQueryValue(0.0f, CurveParameterMode::Percentage), 1e-6 * 100.0);
  EXPECT_EQ(CurveQueryValue(0.25f, CurveParameterMode::Percentage), 25.0);
  EXPECT_EQ(CurveQueryValue(7.5f, CurveParameterMode::Parameter), 7.5);
  EXPECT_TRUE(std::isnan(CurveQueryValue(std::nanf(""), CurveParameterMode::Parameter)));
}

// A straight curve along x whose tangent has the length of the parameter, and whose normal
// vanishes beyond u = 1.
class Ray final : public CurveSampler {
 public:
  CurveFrame At(CurveParameterMode mode, double value) const override {
    lastMode = mode;
    CurveFrame frame;
    frame.position = {value, 0.0, 0.0};
    frame.tangent = {value, 0.0, 0.0};
    frame.normal = value > 1.0 ? Vec3d{} : Vec3d{0.0, 3.0, 0.0};
    frame.binormal = {0.0, 0.0, 0.5};
    return frame;
  }
  mutable CurveParameterMode lastMode = CurveParameterMode::Parameter;
};

// Scales by (2, 1, 1) and moves by (0, 0, 10).
class Stretched final : public CurvePlacement {
 public:
  Vec3d PositionToWorld(const Vec3d& p) const override { return {2 * p.x, p.y, p.z + 10}; }
  Vec3d DirectionToWorld(const Vec3d& v) const override { return {2 * v.x, v.y, v.z}; }
};

TEST(SampleCurve, PositionsAreMappedAndDirectionsMappedThenNormalised) {
  const Ray ray;
  const Stretched placement;
  const std::vector<float> parameters{0.0f, 0.5f, 4.0f};
  std::vector<Vec3f> out(3);
  SampleCurve(parameters, CurveParameterMode::Normalized, &ray, placement, CurveOutput::Position,
              out);
  EXPECT_EQ(ray.lastMode, CurveParameterMode::Normalized);
  EXPECT_EQ(out[0].x, float(2e-6));
  EXPECT_EQ(out[0].z, 10.0f);
  EXPECT_EQ(out[1].x, 1.0f);
  EXPECT_EQ(out[2].x, 8.0f);
  SampleCurve(parameters, CurveParameterMode::Parameter, &ray, placement, CurveOutput::Tangent,
              out);
  for (const Vec3f& v : out) EXPECT_EQ(v.x, 1.0f);
  SampleCurve(parameters, CurveParameterMode::Parameter, &ray, placement, CurveOutput::Normal, out);
  EXPECT_EQ(out[1].y, 1.0f);
  EXPECT_EQ(out[2].y, 0.0f);  // a vanishing direction stays zero
  SampleCurve(parameters, CurveParameterMode::Parameter, &ray, placement, CurveOutput::Binormal,
              out);
  EXPECT_EQ(out[0].z, 1.0f);
}

TEST(SampleCurve, WithoutACurveEveryOutputIsTheZeroVector) {
  const Stretched placement;
  const std::vector<float> parameters{0.5f, 1.0f};
  std::vector<Vec3f> out(2, Vec3f{9, 9, 9});
  SampleCurve(parameters, CurveParameterMode::Percentage, nullptr, placement, CurveOutput::Position,
              out);
  for (const Vec3f& v : out) {
    EXPECT_EQ(v.x, 0.0f);
    EXPECT_EQ(v.y, 0.0f);
    EXPECT_EQ(v.z, 0.0f);
  }
}

}  // namespace
}  // namespace quillix
