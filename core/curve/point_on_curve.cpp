#include "core/curve/point_on_curve.h"

#include <cassert>
#include <cmath>

#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

// Unlike Normalise of the vector operations, a direction of any positive finite length is
// scaled to unit length and any other is kept as it is, as the host's own in-place
// normalisation does.
Vec3d Normalised(const Vec3d& v) {
  const double length = Length(v);
  if (!(length > 0.0) || !std::isfinite(length)) return v;
  return Divide(v, length);
}

Vec3f Narrow(const Vec3d& v) {
  return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

}  // namespace

CurveParameterMode CurveModeFromValue(std::int32_t mode) {
  if (mode == 1) return CurveParameterMode::Normalized;
  if (mode == 2) return CurveParameterMode::Percentage;
  return CurveParameterMode::Parameter;
}

double CurveQueryValue(float u, CurveParameterMode mode) {
  double value = u;
  if (value < 1e-6) value = 1e-6;
  return mode == CurveParameterMode::Percentage ? value * 100.0 : value;
}

void SampleCurve(std::span<const float> parameters, CurveParameterMode mode,
                 const CurveSampler* curve, const CurvePlacement& placement, CurveOutput output,
                 std::span<Vec3f> out) {
  assert(out.size() == parameters.size());
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (curve == nullptr) {
      out[i] = Vec3f{};
      continue;
    }
    const CurveFrame frame = curve->At(mode, CurveQueryValue(parameters[i], mode));
    switch (output) {
      case CurveOutput::Position:
        out[i] = Narrow(placement.PositionToWorld(frame.position));
        break;
      case CurveOutput::Tangent:
        out[i] = Narrow(Normalised(placement.DirectionToWorld(frame.tangent)));
        break;
      case CurveOutput::Normal:
        out[i] = Narrow(Normalised(placement.DirectionToWorld(frame.normal)));
        break;
      case CurveOutput::Binormal:
        out[i] = Narrow(Normalised(placement.DirectionToWorld(frame.binormal)));
        break;
    }
  }
}

}  // namespace quillix
