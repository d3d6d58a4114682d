// Per-vertex flag words and per-polygon flag bytes of a mesh (derived items 65536 and 524288
// of QRVGeometry).
#pragma once

#include <cstdint>

#include "kernel/memory_context.h"
#include "kernel/mesh_view.h"

namespace quillix {

// Per-vertex flag word bits.
inline constexpr std::uint32_t kVertexFlagReferenced = 1;   // named by at least one polygon
inline constexpr std::uint32_t kVertexFlagNonManifold = 2;  // on an edge shared by 3+ polygons
inline constexpr std::uint32_t kVertexFlagPole = 4;         // more than 255 neighbours
inline constexpr std::uint32_t kVertexFlagBorder = 8;       // on an edge used by one polygon only
// Per-polygon flag byte values.
inline constexpr std::uint8_t kPolygonFlagAllBorder = 1;  // every corner has kVertexFlagBorder
inline constexpr std::uint8_t kPolygonFlagInvalid = 128;  // fewer than 3 corners or a repeated one

// One flag word per vertex (kVertexFlag* bits), vertexCount words from `memory`; null when it
// refuses.
std::uint32_t* ComputeVertexFlags(const MeshView& mesh, QRVMemoryContext& memory);

// One flag byte per polygon (kPolygonFlag* values), polygonCount bytes from `memory`; null
// when it refuses. `vertexFlags` are ComputeVertexFlags' words; the invalid test runs only
// when `anyInvalid` (the mesh's invalid-polygon count is above 0).
std::uint8_t* ComputePolygonFlags(const MeshView& mesh, const std::uint32_t* vertexFlags,
                                  bool anyInvalid, QRVMemoryContext& memory);

}  // namespace quillix
