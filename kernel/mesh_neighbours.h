// Vertex neighbourhoods of a mesh (derived items 256 and 2097152 of QRVGeometry) and the
// polygon-edge incidences they are made from.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernel/memory_context.h"
#include "kernel/mesh_view.h"

namespace quillix {

// Every polygon edge (corner k to corner k+1, wrapping) as an incidence of its lower end only,
// grouped by that vertex: vertex v's higher ends are items[offsets[v] .. offsets[v + 1]), each
// once per polygon edge that joins the two, in polygon order. Sorted (SortIncidenceRow), a run
// of equal items is one edge and its length the number of polygon edges on it. Edges from a
// corner to the same vertex are skipped. Half the size of listing both ends, and each row is
// half as long to sort.
// Both arrays are scratch blocks of the memory context (AllocateScratch), of the byte sizes kept
// beside them: they live only while a result is made from them.
struct EdgeIncidences {
  std::int32_t* offsets = nullptr;  // vertexCount + 1
  std::int32_t* items = nullptr;    // offsets[vertexCount]
  std::size_t offsetBytes = 0;
  std::size_t itemBytes = 0;
};

// Builds `incidences` with scratch blocks from `memory`. False on refusal; the caller then
// releases what was built (ReleaseEdgeIncidences).
bool BuildEdgeIncidences(const MeshView& mesh, QRVMemoryContext& memory,
                         EdgeIncidences& incidences);
void ReleaseEdgeIncidences(QRVMemoryContext& memory, EdgeIncidences& incidences);
// Sorts one incidence row in place; readers sort each row just before reading it, while it is in
// cache, instead of in a pass of its own.
void SortIncidenceRow(std::int32_t* begin, std::int32_t* end);

// Vertex v's neighbours, in ascending vertex index, are lists[offsets[v] .. offsets[v + 1]).
// The byte counts saturate at 255; the offsets are exact for any number of neighbours.
struct MeshNeighbours {
  std::uint8_t* counts = nullptr;   // vertexCount
  std::int32_t* offsets = nullptr;  // vertexCount + 1
  std::int32_t* lists = nullptr;    // offsets[vertexCount]
};

// Builds `neighbours` with arrays from `memory`, each allocated exactly to size. False when
// `memory` refuses; nothing stays allocated then.
bool BuildNeighbours(const MeshView& mesh, QRVMemoryContext& memory, MeshNeighbours& neighbours);
void ReleaseNeighbours(QRVMemoryContext& memory, MeshNeighbours& neighbours);

// One neighbour slot with the length of its edge: the path search reads both for every
// neighbour, so they sit side by side in one row.
struct NeighbourStep {
  std::int32_t vertex;  // the neighbour, as in neighbours.lists
  float length;         // sqrt(dy * dy + dx * dx + dz * dz) in single precision
};

// Per neighbour slot (parallel to neighbours.lists): the neighbour and the distance between
// the two vertices, the path search's step length. An array of offsets[vertexCount] steps from
// `memory`; null when it refuses.
NeighbourStep* ComputeNeighbourSteps(const MeshView& mesh, const MeshNeighbours& neighbours,
                                     QRVMemoryContext& memory);

}  // namespace quillix
