// PolygonMesh: a geometry of points and polygons.
#pragma once

#include <xsi_geometry.h>
#include <xsi_geometryaccessor.h>
#include <xsi_primitive.h>

namespace XSI {

class PolygonMesh : public Geometry {
 public:
  PolygonMesh() = default;
  /// Binds to `ref` when it refers to a polygon mesh; otherwise the mesh is invalid.
  explicit PolygonMesh(const CRef& ref);

  /// The points, and the polygons as one list: each polygon's vertex count followed by its
  /// vertex indices.
  CStatus Get(MATH::CVector3Array& points, CLongArray& polygonData) const;
  LONG GetPolygonCount() const;
  /// Flat access to the mesh's arrays. The construction mode and subdivision level are
  /// accepted for their meaning on the host; the offline mesh has one shape.
  CGeometryAccessor GetGeometryAccessor(siConstructionMode mode = siConstructionModeSecondaryShape,
                                        LONG subdivisionLevel = 0) const;
};

}  // namespace XSI
