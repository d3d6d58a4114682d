// Rational NURBS curves of the offline host: validation, evaluation with derivatives, and
// arc length.
//
// A curve of degree p has n control points (x, y, z, w) with positive weights and n + p + 1
// non-decreasing knots; its parameter runs over [knots[p], knots[n]]. Evaluation runs de Boor's
// algorithm on the homogeneous points (w·x, w·y, w·z, w) and on their first and second
// hodographs, then divides out the weight with the quotient rule.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace xsihost {

using Vec3d = std::array<double, 3>;

struct NurbsCurveData {
  int degree = 3;
  std::vector<std::array<double, 4>> points;  // x, y, z, weight
  std::vector<double> knots;                  // points.size() + degree + 1 values
  bool closed = false;
};

/// Why `curve` cannot be evaluated, or an empty string when it can. Checks the degree, the
/// point and knot counts, finite non-decreasing knots, a non-empty parameter range, interior
/// knot multiplicities of at most the degree, and finite positive weights.
std::string ValidateNurbsCurve(const NurbsCurveData& curve);

/// Position and frame at one parameter, in the curve's own space.
struct CurveSample {
  Vec3d position{};
  Vec3d tangent{};   // dC/du with respect to the curve's own parameter (not normalised)
  Vec3d normal{};    // unit principal normal, towards the centre of curvature
  Vec3d binormal{};  // unit tangent × normal
};

/// Evaluator over one valid curve (check with ValidateNurbsCurve first). Builds the arc-length
/// table of its knot spans at construction; every query is then const and thread-safe.
class NurbsCurveEvaluator {
 public:
  explicit NurbsCurveEvaluator(NurbsCurveData curve);

  const NurbsCurveData& Data() const { return curve_; }
  double Length() const { return cumulative_.empty() ? 0.0 : cumulative_.back(); }

  /// Sample at the curve parameter `u`, clamped to the parameter range.
  CurveSample Evaluate(double u) const;
  /// Position and its first two derivatives at `u` (clamped).
  void Derivatives(double u, Vec3d& position, Vec3d& first, Vec3d& second) const;

  /// Curve parameter of the normalised parameter `t` in [0, 1] (clamped): a linear map of
  /// the parameter range.
  double ParameterFromNormalized(double t) const;
  /// Curve parameter at `percent` per cent (clamped to [0, 100]) of the arc length from the
  /// start; accurate to far better than 1e-6 of the length.
  double ParameterFromPercentage(double percent) const;

 private:
  double SpanLength(double a, double b) const;
  double Speed(double u) const;

  NurbsCurveData curve_;
  double min_ = 0.0;
  double max_ = 0.0;
  double tolerance_ = 0.0;          // absolute tolerance of the length integrals
  std::vector<double> spanStarts_;  // start parameter of each non-empty knot span, and the end
  std::vector<double> cumulative_;  // arc length from the start to each entry of spanStarts_
};

}  // namespace xsihost
