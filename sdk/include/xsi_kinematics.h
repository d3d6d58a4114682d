// Kinematics: an object's transforms, global and local.
#pragma once

#include <xsi_kinematicstate.h>
#include <xsi_property.h>

namespace XSI {

class Kinematics : public Property {
 public:
  Kinematics() = default;
  explicit Kinematics(const CRef& ref);

  /// The global state: the local transform composed with the parent's global one.
  KinematicState GetGlobal() const;
  /// The local state: the transform relative to the parent.
  KinematicState GetLocal() const;
};

}  // namespace XSI
