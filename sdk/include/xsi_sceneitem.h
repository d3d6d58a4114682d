// SceneItem: an object of the scene that carries properties.
#pragma once

#include <xsi_base.h>
#include <xsi_string.h>

namespace XSI {

class Property;

class SceneItem : public ProjectItem {
 public:
  SceneItem() = default;
  explicit SceneItem(const CRef& ref) : ProjectItem(ref) {}

  /// The property named `name` ("Visibility", "Kinematics"); an invalid property when the
  /// object has none by that name.
  Property GetPropertyFromName(const CString& name) const;
};

}  // namespace XSI
