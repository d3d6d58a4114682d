// Property: a named set of parameters of a scene object ("Visibility" with "viewvis").
#pragma once

#include <cfloat>

#include <xsi_sceneitem.h>

namespace XSI {

class Property : public SceneItem {
 public:
  Property() = default;
  explicit Property(const CRef& ref);

  using ProjectItem::GetParameterValue;
  /// Value of the parameter `name` at `frame` (the largest double: the current frame); an
  /// empty value when there is none.
  CValue GetParameterValue(const CString& name, double frame) const;
};

}  // namespace XSI
