// NurbsCurve: one rational NURBS curve of a curve list, evaluated in the object's space.
//
// Every evaluation gives the position, the tangent (the derivative with respect to the curve's
// own parameter), the unit principal normal and the unit binormal (tangent × normal). Where
// the curve is straight the normal is any unit perpendicular, chosen from the world axis least
// aligned with the tangent.
#pragma once

#include <xsi_base.h>
#include <xsi_vector3.h>

namespace XSI {

class NurbsCurve : public SIObject {
 public:
  NurbsCurve() = default;
  /// Binds to `ref` when it refers to a curve; otherwise the curve is invalid.
  explicit NurbsCurve(const CRef& ref);

  /// At the curve parameter `u` (clamped to the curve's range).
  CStatus EvaluatePosition(double u, MATH::CVector3& position, MATH::CVector3& tangent,
                           MATH::CVector3& normal, MATH::CVector3& binormal) const;
  /// At the normalised parameter `u` in [0, 1] (clamped): the parameter range mapped linearly.
  CStatus EvaluateNormalizedPosition(double u, MATH::CVector3& position, MATH::CVector3& tangent,
                                     MATH::CVector3& normal, MATH::CVector3& binormal) const;
  /// At `percentage` per cent (clamped to [0, 100]) of the arc length from the start.
  CStatus EvaluatePositionFromPercentage(double percentage, MATH::CVector3& position,
                                         MATH::CVector3& tangent, MATH::CVector3& normal,
                                         MATH::CVector3& binormal) const;
};

}  // namespace XSI
