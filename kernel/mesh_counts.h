// Counts over a mesh's polygons and vertices (derived items 1, 2 and 4 of QRVGeometry).
#pragma once

#include <cstdint>

#include "kernel/memory_context.h"
#include "kernel/mesh_view.h"

namespace quillix {

// Vertices named by at least one polygon index in range, and the rest of the vertices.
struct VertexReferenceCounts {
  std::int32_t referenced = -1;
  std::int32_t unreferenced = -1;
};

// Fills `counts`; false when `memory` refuses the vertexCount-byte scratch array.
bool CountVertexReferences(const MeshView& mesh, QRVMemoryContext& memory,
                           VertexReferenceCounts& counts);

// Whether the polygon of `size` corners starting at node `firstNode` is invalid: fewer than
// 3 corners, a corner outside 0..vertexCount-1, or one vertex named twice.
bool PolygonIsInvalid(const MeshView& mesh, std::int64_t firstNode, std::int32_t size);

// Number of invalid polygons (PolygonIsInvalid), each counted once.
std::int32_t CountInvalidPolygons(const MeshView& mesh);

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
