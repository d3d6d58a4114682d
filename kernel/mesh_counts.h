// Counts over a mesh's polygons and vertices (derived items 1, 2 and 4 of QRVGeometry).
#pragma once

#include <cstdint>

#include "kernel/mesh_view.h"

namespace quillix {

// Vertices named by at least one polygon index in range, and the rest of the vertices.
struct VertexReferenceCounts {
  std::int32_t referenced = -1;
  std::int32_t unreferenced = -1;
};

// Whether the polygon of `size` corners starting at node `firstNode` is invalid: fewer than
// 3 corners, a corner outside 0..vertexCount-1, or one vertex named twice.
bool PolygonIsInvalid(const MeshView& mesh, std::int64_t firstNode, std::int32_t size);

// The clean-up's two questions in one pass over the polygons: the number of invalid polygons
// (PolygonIsInvalid, each counted once) and, when `seen` is given (vertexCount bytes, all 0 on
// entry, marked 1 for every referenced vertex on return), the vertex reference counts. Without
// `seen`, `references` is left as it was.
std::int32_t CheckPolygons(const MeshView& mesh, std::uint8_t* seen,
                           VertexReferenceCounts& references);

// Polygons by size: triangles, quads, polygons of 5+ corners, and the triangles of their fan
// triangulations (the sum of size - 2 over polygons of 3+ corners).
struct PolygonSizeCounts {
  std::int32_t triangles = -1;
  std::int32_t quads = -1;
  std::int32_t large = -1;
  std::int32_t fanTriangles = -1;
};

// Fills `counts`; false when a count does not fit 32 bits.
bool CountPolygonSizes(const MeshView& mesh, PolygonSizeCounts& counts);

}  // namespace quillix
