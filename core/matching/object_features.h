// Geometry maths behind the features that object matching compares: surface areas, the
// vertex centre and normal averages of a triangulated surface, in local space or mapped by
// a global transform.
#pragma once

#include <span>

#include "core/matching/match_scoring.h"

namespace quillix {

// `point` mapped by `transform`: the row (x, y, z, 1) times the matrix. The fourth column
// is ignored (transforms here are affine).
Vec3d TransformPoint(const Vec3d& point, const Matrix4d& transform);

// `direction` mapped by the linear part of `transform` (rows 0 to 2: scaling, rotation and
// any shear, no translation).
Vec3d TransformDirection(const Vec3d& direction, const Matrix4d& transform);

// Sum over the triangles of half the length of the cross product of two edges.
// `corners` holds three positions per triangle; its size must be a multiple of 3. No
// triangles give 0.
double TriangleSurfaceArea(std::span<const Vec3d> corners);

// Same as TriangleSurfaceArea over the corners mapped by `transform`.
double TransformedSurfaceArea(std::span<const Vec3d> corners, const Matrix4d& transform);

// Arithmetic mean of `values`; the zero vector when `values` is empty.
Vec3d Average(std::span<const Vec3d> values);

// Mean of `points` mapped by `transform` (TransformPoint); the zero vector when empty.
Vec3d TransformedPointAverage(std::span<const Vec3d> points, const Matrix4d& transform);

// Mean of `directions` mapped by `transform` (TransformDirection); the zero vector when
// empty.
Vec3d TransformedDirectionAverage(std::span<const Vec3d> directions,
                                     const Matrix4d& transform);

// Which features a weight set asks for, so that nothing unweighted is read from the host.
struct FeatureNeeds {
  bool triangles = false;  // triangle corners (areas, vertex centre)
  bool boundingBox = false;
  bool boundingSphere = false;
  bool localArea = false;
  bool globalArea = false;
  bool vertexCenter = false;
  bool localNormals = false;
  bool globalNormals = false;
  bool localTransform = false;
  bool globalTransform = false;  // also needed for the global area, centre and normals
};

// Features needed for the positive weights of `weights`.
FeatureNeeds NeededFeatures(const MatchWeights& weights);

}  // namespace quillix
