// Geometry of a primitive: points, triangles, bounding volumes, ICE attributes and point
// locator queries (ray casts).
#pragma once

#include <xsi_base.h>
#include <xsi_iceattribute.h>
#include <xsi_plainarray.h>
#include <xsi_ref.h>
#include <xsi_transformation.h>
#include <xsi_vector3.h>

namespace XSI {

enum siVolumeCenterMethod {
  siVolumeCenterMethodBBoxCenter = 0,  // the centre of the bounding box
  siVolumeCenterMethodCOG = 1,         // the average of the points
};

enum siClosestLocationMethod {
  siClosestVertexOrKnot = 0,
  siClosestSurface = 1,
  siClosestSmoothedSurface = 2,
};

enum siLineIntersectionType {
  siSemiLineIntersection = 0,  // hits at or after the ray's origin
  siLineIntersection = 1,      // hits anywhere on the line
  siSegmentIntersection = 2,   // hits between origin and origin + direction
};

/// The points of a geometry (vertices of a mesh, control points of a curve list).
class CPointRefArray : public CRefArray {
 public:
  CPointRefArray() = default;
  LONG GetCount() const { return positions_.GetCount(); }

 private:
  MATH::CVector3Array positions_;
  friend class Geometry;
};

/// The triangles of a mesh: each polygon fanned from its first vertex.
class CTriangleRefArray : public CRefArray {
 public:
  CTriangleRefArray() = default;
  LONG GetCount() const { return positions_.GetCount() / 3; }
  /// Three corner positions per triangle.
  MATH::CVector3Array GetPositionArray() const { return positions_; }
  /// The polygon-node normal at each corner, three per triangle.
  MATH::CVector3Array GetPolygonNodeNormalArray() const { return normals_; }

 private:
  MATH::CVector3Array positions_;
  MATH::CVector3Array normals_;
  friend class Geometry;
};

/// Locations on a geometry found by a query: per query, a triangle and its barycentric
/// weights, or nothing.
class PointLocatorData {
 public:
  PointLocatorData() = default;
  LONG GetCount() const { return static_cast<LONG>(triangles_.size()); }
  /// True when query `index` found a location.
  bool IsPtLocatorValid(LONG index) const {
    return index >= 0 && index < GetCount() && triangles_[static_cast<size_t>(index)] >= 0;
  }

 private:
  std::vector<LONG> triangles_;
  std::vector<double> weights_;  // three per query
  friend class Geometry;
};

class Geometry : public SIObject {
 public:
  Geometry() = default;
  explicit Geometry(const CRef& ref);

  CPointRefArray GetPoints() const;
  CTriangleRefArray GetTriangles() const;
  /// Centre and extents (full sizes along X, Y and Z) of the axis-aligned box around the
  /// points mapped by `transform`. Fails for a geometry without points.
  CStatus GetBoundingBox(double& centerX, double& centerY, double& centerZ, double& extentX,
                         double& extentY, double& extentZ,
                         const MATH::CTransformation& transform = MATH::CTransformation()) const;
  /// Centre (by `method`) and radius (the farthest mapped point from it) of a sphere around
  /// the points mapped by `transform`. Fails for a geometry without points.
  CStatus GetBoundingSphere(double& centerX, double& centerY, double& centerZ, double& radius,
                            siVolumeCenterMethod method = siVolumeCenterMethodBBoxCenter,
                            const MATH::CTransformation& transform = MATH::CTransformation()) const;
  /// The attribute `name`; an undefined attribute when the geometry has none by that name.
  ICEAttribute GetICEAttributeFromName(const CString& name) const;

  /// Prepares ray casts against the mesh mapped by `transform`. The method and the cache
  /// size are accepted for their meaning on the host; `facets` restricts the queries to those
  /// polygons when not empty.
  CStatus SetupPointLocatorQueries(siClosestLocationMethod method,
                                   const MATH::CTransformation& transform, const CLongArray& facets,
                                   LONG pointCacheSize);
  /// Casts `count` rays (positions and directions, three doubles each) and keeps the nearest
  /// hit of each along its ray (|t| smallest for whole lines).
  PointLocatorData GetRaycastIntersections(
      LONG count, const double* positions, const double* directions,
      siLineIntersectionType type = siSemiLineIntersection) const;
  /// Positions of `count` locators chosen by `indices` (all in order when null), three
  /// doubles each, in the space of the query set-up; invalid locators give (0, 0, 0).
  CStatus EvaluatePositions(const PointLocatorData& locators, LONG count, const LONG* indices,
                            double* positions) const;

 private:
  MATH::CTransformation locatorTransform_;
  CLongArray locatorFacets_;
};

}  // namespace XSI
