// X3DObject: an object of the scene hierarchy, with kinematics and a primitive.
#pragma once

#include <xsi_plainarray.h>
#include <xsi_ref.h>
#include <xsi_sceneitem.h>
#include <xsi_string.h>

// Families that FindChild2 and FindChildren2 filter by.
#define siMeshFamily L"Mesh Geometries"
#define siNurbsCurveListFamily L"NURBS Curve List Geometries"
#define siGeometryFamily L"Geometries"
#define siNullPrimitiveFamily L"Nulls"
#define siImplicitGeometryFamily L"Implicit Geometries"
#define siChainElementFamily L"Chain Elements"
#define siModelFamily L"Models"

namespace XSI {

class Kinematics;
class Primitive;

class X3DObject : public SceneItem {
 public:
  X3DObject() = default;
  /// Binds to `ref` when it refers to a scene object; otherwise the object is invalid.
  explicit X3DObject(const CRef& ref);

  /// The first child (depth first, in scene order) matching `name` (empty: any), `type`
  /// (empty: any) and `families` (empty: any; otherwise the child's family must be one of
  /// them), searching the whole subtree when `recursive`; invalid when none matches.
  X3DObject FindChild2(const CString& name = CString(), const CString& type = CString(),
                       const CStringArray& families = CStringArray(), bool recursive = true) const;
  /// Every such child, in the same order.
  CRefArray FindChildren2(const CString& name = CString(), const CString& type = CString(),
                          const CStringArray& families = CStringArray(),
                          bool recursive = true) const;

  Primitive GetActivePrimitive() const;
  Kinematics GetKinematics() const;
};

}  // namespace XSI
