// The edge list of a mesh (derived item 16 of QRVGeometry).
#pragma once

#include <cstdint>

#include "kernel/memory_context.h"
#include "kernel/mesh_neighbours.h"
#include "kernel/mesh_view.h"

namespace quillix {

// Every edge once, as the pair (a, b) with a < b, ordered by a then b, with two index arrays
// that lead from vertices and neighbour slots to it.
struct MeshEdges {
  std::int32_t count = -1;            // half the sum of all neighbour counts
  std::int32_t* pairs = nullptr;      // count × 2 vertex indices
  std::int32_t* starts = nullptr;     // vertexCount + 1: first edge whose lower vertex is v
  std::int32_t* slotEdges = nullptr;  // per neighbour slot: the edge of (v, neighbour)
};

// Builds `edges` from the neighbour lists with arrays from `memory`. False when `memory`
// refuses; nothing stays allocated then.
bool BuildEdges(const MeshView& mesh, const MeshNeighbours& neighbours, QRVMemoryContext& memory,
                MeshEdges& edges);
void ReleaseEdges(QRVMemoryContext& memory, MeshEdges& edges);

}  // namespace quillix
