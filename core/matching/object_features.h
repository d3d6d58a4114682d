// Geometry maths behind the features that object matching compares: surface areas, the
// vertex centre and normal averages of a triangulated surface, in local space or mapped by
// a global transform.
#pragma once

#include <span>

#include "core/matching/match_scoring.h"
#include "core/math/mat4_ops.h"

namespace quillix {

// Sum over the triangles of half the length of the cross product of the edges (b − a) and
// (c − a), added in triangle order.
//  - corners: #T × 3 positions, the corners a, b, c of each triangle in turn; its size must
//    be a multiple of 3.
// No triangles give 0; degenerate triangles add 0.
double TriangleSurfaceArea(std::span<const Vec3d> corners);

// TriangleSurfaceArea over `corners` (#T × 3 positions) each mapped by TransformPoint
// (core/math/mat4_ops.h) with `transform`.
double TransformedSurfaceArea(std::span<const Vec3d> corners, const Mat4d& transform);

// Arithmetic mean of `values` (#N vectors): their sum in order divided by N. The zero vector
// when `values` is empty.
Vec3d Average(std::span<const Vec3d> values);

// Average of `points` (#N positions) each mapped by TransformPoint (core/math/mat4_ops.h) with
// `transform`; the zero vector when empty.
Vec3d TransformedPointAverage(std::span<const Vec3d> points, const Mat4d& transform);

// Average of `directions` (#N vectors) each mapped by TransformDirection with `transform`;
// the zero vector when empty.
Vec3d TransformedDirectionAverage(std::span<const Vec3d> directions, const Mat4d& transform);

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

// The features that the positive weights of `weights` need; a weight that is 0, negative or
// NaN needs nothing.
FeatureNeeds NeededFeatures(const MatchWeights& weights);

}  // namespace quillix
