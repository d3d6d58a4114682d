// Shortest vertex paths across a mesh, along its vertex neighbourhoods.
#pragma once

#include <cstdint>

#include "kernel/geometry.h"
#include "kernel/memory_context.h"
#include "kernel/status.h"

namespace quillix {

// Finds the shortest chain of neighbouring vertices from `start` to `end`, each step
// measured by the straight-line distance between the two positions in single precision.
//
//  - geometry: must hold positions and neighbour lists (computed beforehand: this call only
//    reads, so many threads may search one geometry at once). Its component numbers are
//    used, when computed, to refuse vertices on different islands without searching.
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
//  - distances / predecessors / openMarks: optional reusable work buffers (vertex count × 4,
//    × 4 and × 1 bytes), grown only when too small and kept afterwards; null uses private
//    buffers released before returning.
// Returns true exactly when status is 0.
//
// The result equals that of the classic scan over an unsorted open list (select the first
// open vertex in index order with the strictly smallest distance, relax neighbours in list
// order on strict improvement, stop at the end vertex): the heap here is keyed by
// (distance, vertex index), so it selects the same vertex at every step.
bool FindVertexPath(const QRVGeometry& geometry, std::int32_t start, std::int32_t end,
                    std::int32_t*& path, std::int32_t& pathLength, std::int32_t algorithm,
                    const std::uint8_t* vertexFlags, QRVStatus& status, QRVMemoryContext& memory,
                    QRVWorkBuffer* distances = nullptr, QRVWorkBuffer* predecessors = nullptr,
                    QRVWorkBuffer* openMarks = nullptr);

// The distance that marks a vertex as not reached: the largest finite float.
inline constexpr float kUnreachedDistance = 3.40282347e38f;

}  // namespace quillix
