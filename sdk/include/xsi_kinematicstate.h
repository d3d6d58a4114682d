// KinematicState: a global or local transform of an object, read at a time.
#pragma once

#include <cfloat>

#include <xsi_property.h>
#include <xsi_transformation.h>

namespace XSI {

class KinematicState : public Property {
 public:
  KinematicState() = default;
  explicit KinematicState(const CRef& ref);

  /// The transform at `frame`; the largest double means the current frame. The identity for
  /// an invalid state.
  MATH::CTransformation GetTransform(double frame = DBL_MAX) const;
};

}  // namespace XSI
