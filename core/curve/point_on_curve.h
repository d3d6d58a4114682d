// Sampling a curve of the scene at many parameters: the parameter clamp, the choice of
// evaluation, and the world-space outputs. The curve and its placement are the caller's.
#pragma once

#include <cstdint>
#include <span>

#include "core/math/math_types.h"

namespace quillix {

// What a parameter value means.
enum class CurveParameterMode {
  Parameter,   // the curve's own parameter
  Normalized,  // the parameter range mapped to [0, 1]
  Percentage,  // per cent of the arc length (the value handed to the curve is U × 100)
};

// Mode port value to mode: 1 normalised, 2 fraction of length, anything else the curve's own
// parameter.
CurveParameterMode CurveModeFromValue(std::int32_t mode);

// The value handed to the curve for a parameter U: U widened to double and clamped from below
// to 1e-6 in every mode (so 0 never reaches the curve), then times 100 in percentage mode.
// NaN passes through unchanged.
double CurveQueryValue(float u, CurveParameterMode mode);

// Position and directions at one place of the curve, in the curve object's own space.
struct CurveFrame {
  Vec3d position, tangent, normal, binormal;
};

// A curve that can be evaluated: implemented over the host's curve by the binding and over
// plain formulas by tests.
class CurveSampler {
 public:
  virtual ~CurveSampler() = default;
  // The frame at `value` (already clamped and scaled by CurveQueryValue) read as `mode`.
  virtual CurveFrame At(CurveParameterMode mode, double value) const = 0;
};

// The curve object's global placement.
class CurvePlacement {
 public:
  virtual ~CurvePlacement() = default;
  // A point in world space (scaling, rotation and translation).
  virtual Vec3d PositionToWorld(const Vec3d& local) const = 0;
  // A direction in world space (scaling and rotation only, no translation).
  virtual Vec3d DirectionToWorld(const Vec3d& local) const = 0;
};

// Which of the four outputs to fill.
enum class CurveOutput { Position, Tangent, Normal, Binormal };

// out[i] = `output` at parameters[i] (#U parameters in, #U vectors out, `out` allocated by the
// caller): the position mapped to world space as it is, or the direction mapped to world space
// and then normalised (a zero or non-finite direction is left as it is), stored in single
// precision. A null `curve` (no usable curve) writes the zero vector everywhere.
void SampleCurve(std::span<const float> parameters, CurveParameterMode mode,
                 const CurveSampler* curve, const CurvePlacement& placement, CurveOutput output,
                 std::span<Vec3f> out);

}  // namespace quillix
