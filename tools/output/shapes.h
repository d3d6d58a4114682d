// Geometry shared by the result files and the pictures: box corners and edges, polygon lists in
// the host's polygonal-description form, mesh edges.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "core/math/math_types.h"

namespace quillix {

// (x, y, z, 1) times `m`, row-vector convention. The fourth column is ignored (taken as
// (0, 0, 0, 1)), as the box and ellipsoid nodes do.
Vec3f TransformPoint(const Mat4f& m, const Vec3f& p);

// The 8 corners of the cube [−1, 1]³ under `m` (TransformPoint): corner i takes x from bit 0,
// y from bit 1 and z from bit 2 of i, a 0 bit giving −1.
std::array<Vec3f, 8> BoxCorners(const Mat4f& m);

// The 12 edges of a box as pairs of BoxCorners indices, x edges first, then y, then z.
inline constexpr std::array<std::array<int, 2>, 12> kBoxEdges = {{{0, 1},
                                                                  {2, 3},
                                                                  {4, 5},
                                                                  {6, 7},
                                                                  {0, 2},
                                                                  {1, 3},
                                                                  {4, 6},
                                                                  {5, 7},
                                                                  {0, 4},
                                                                  {1, 5},
                                                                  {2, 6},
                                                                  {3, 7}}};

// The matrix of a sphere of `radius` around `centre`: uniform scale and translation, so that a
// sphere can be drawn as the ellipsoid the unit sphere becomes under it.
Mat4f SphereTransform(const Vec3f& centre, float radius);

// Splits a polygonal description (vertex indices, each polygon ended by a negative value) into
// polygons, as (first, count) ranges into `description`. Indices after the last negative value
// form one more polygon. Empty polygons (two negative values in a row) are dropped; indices are
// not checked.
struct PolygonRange {
  std::size_t first = 0;
  std::size_t count = 0;
};
std::vector<PolygonRange> SplitPolygons(std::span<const std::int32_t> description);

// The distinct undirected edges of the polygons of `description` (SplitPolygons), each as
// (smaller index, larger index), in order of first appearance. Polygons with an index outside
// [0, vertexCount) are skipped whole; a one-vertex polygon has no edge, a two-vertex one has
// one.
std::vector<std::array<std::int32_t, 2>> MeshEdges(std::span<const std::int32_t> description,
                                                   std::size_t vertexCount);

// Whether every index of `indices` lies in [0, vertexCount).
bool IndicesInRange(std::span<const std::int32_t> indices, std::size_t vertexCount);

}  // namespace quillix
