// Shortest vertex paths across a mesh, along its vertex neighbourhoods.
#pragma once

#include <cstdint>

#include "kernel/geometry.h"
#include "kernel/memory_context.h"
#include "kernel/status.h"

namespace quillix {

// Reusable state of FindVertexPath, kept from one search to the next so that a search pays
// only for the vertices it reaches: between calls every per-vertex record is back at "not
// reached", because each search resets exactly the records it wrote before returning. A new
// block is initialised once, when it is first reserved or grown. The contents belong to
// FindVertexPath; one work record per thread.
//
//  - records: vertex count × 8 bytes, per vertex its distance and its place in the search's
//    heap side by side (the relaxation reads both for every neighbour).
//  - predecessors: vertex count × 4 bytes, valid only for the vertices a search reached.
//  - order: vertex count × 8 bytes, the heap of reached open vertices from the front and the
//    settled vertices from the back; together they list every record a search wrote.
// Each buffer grows only when a larger mesh needs more and keeps its size afterwards; `memory`
// (or, when null, the context given to the search) accounts the blocks.
struct VertexPathWork {
  QRVWorkBuffer records, predecessors, order;

  VertexPathWork() = default;
  explicit VertexPathWork(QRVMemoryContext* memory)
      : records(memory), predecessors(memory), order(memory) {}
};

// Finds the shortest chain of neighbouring vertices from `start` to `end`, each step
// measured by the straight-line distance between the two positions in single precision.
//
//  - geometry: must hold positions and neighbour lists (computed beforehand: this call only
//    reads, so many threads may search one geometry at once). Its component numbers are
//    used, when computed, to refuse vertices on different islands without searching; its
//    neighbour steps (NeighbourSteps), when computed, replace measuring every step.
//  - path / pathLength: on entry pathLength is the most vertices the caller accepts (below 1
//    means the vertex count). If `path` is null, an array of exactly the path's length is
//    allocated through `memory` and handed over (release it with memory.Release); otherwise
//    the path is written into the caller's array, which must hold the maximum length. On
//    return pathLength is the number of vertices written, start first and end last (0 on
//    any failure, and then nothing is allocated).
//  - algorithm: 0 is the only one.
//  - vertexFlags: null, or one byte per vertex where 0 blocks the vertex.
//  - status: set to 0 at entry; on failure 5 no positions, 19 no neighbour lists, 6 start or
//    end out of range (the last failing of these checks decides), 27 different islands or
//    no path, -2 (two's complement) start equal to end, 20 algorithm not 0, 9 memory
//    refused, 98 path longer than the maximum.
//  - work: optional reusable state (VertexPathWork); null uses a private one released before
//    returning, which costs initialising records for the whole mesh.
// Returns true exactly when status is 0.
//
// The result equals that of the classic scan over an unsorted open list (select the first
// open vertex in index order with the strictly smallest distance, relax neighbours in list
// order on strict improvement, stop at the end vertex): the heap here is keyed by
// (distance, vertex index), so it selects the same vertex at every step.
bool FindVertexPath(const QRVGeometry& geometry, std::int32_t start, std::int32_t end,
                    std::int32_t*& path, std::int32_t& pathLength, std::int32_t algorithm,
                    const std::uint8_t* vertexFlags, QRVStatus& status, QRVMemoryContext& memory,
                    VertexPathWork* work = nullptr);

// The distance that marks a vertex as not reached: the largest finite float.
inline constexpr float kUnreachedDistance = 3.40282347e38f;

}  // namespace quillix
