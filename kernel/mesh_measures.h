// Polygon measures of a mesh (derived item 1048576 of QRVGeometry).
#pragma once

#include "kernel/memory_context.h"
#include "kernel/mesh_view.h"

namespace quillix {

// One area per polygon (polygonCount floats from `memory`; null when it refuses): the sum of
// its fan triangles' areas, computed in double and rounded once. Polygons of fewer than 3
// corners measure 0; a NaN corner gives NaN, an overflowing one infinity.
float* ComputePolygonAreas(const MeshView& mesh, QRVMemoryContext& memory);

}  // namespace quillix
