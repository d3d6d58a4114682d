// Primitive: what an object is made of (its type and parameters) and its geometry.
#pragma once

#include <cfloat>

#include <xsi_base.h>
#include <xsi_geometry.h>

namespace XSI {

enum siConstructionMode {
  siConstructionModeModeling = 0,
  siConstructionModePrimaryShape = 1,
  siConstructionModeSecondaryShape = 2,
  siConstructionModeAnimation = 3,
  siConstructionModeDefault = 4,
};

class Primitive : public ProjectItem {
 public:
  Primitive() = default;
  explicit Primitive(const CRef& ref);

  using ProjectItem::GetParameterValue;
  /// Value of the parameter `name` ("length", "radius", "size", ...) at `frame` (the largest
  /// double: the current frame); an empty value when the primitive has none.
  CValue GetParameterValue(const CString& name, double frame) const;

  /// The geometry at `frame`. Scenes of the offline host hold one geometry per object, the
  /// same in every construction mode. Invalid for objects without geometry (nulls, cubes, ...).
  Geometry GetGeometry(double frame = DBL_MAX,
                       siConstructionMode mode = siConstructionModeSecondaryShape) const;
};

}  // namespace XSI
