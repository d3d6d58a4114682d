#include "kernel/mesh_edges.h"

#include <algorithm>

namespace quillix {

bool BuildEdges(const MeshView& mesh, const MeshNeighbours& neighbours, QRVMemoryContext& memory,
                MeshEdges& edges) {
  const std::int32_t vertexCount = mesh.vertexCount;
  const std::int32_t* offsets = neighbours.offsets;
  const std::int32_t* lists = neighbours.lists;
  const std::int32_t slots = offsets[vertexCount];
  edges = {};
  edges.starts = memory.AllocateArray<std::int32_t>(std::size_t(vertexCount) + 1);
  // Two ints per edge, one edge per two slots.
  edges.pairs = memory.AllocateArray<std::int32_t>(std::size_t(slots));
  edges.slotEdges = memory.AllocateArray<std::int32_t>(std::size_t(slots));
  if (edges.starts == nullptr || edges.pairs == nullptr || edges.slotEdges == nullptr) {
    ReleaseEdges(memory, edges);
    return false;
  }
  // Lists are ascending, so a vertex's higher neighbours form the tail of its list.
  const auto firstHigher = [&](std::int32_t v) {
    return std::int32_t(std::upper_bound(lists + offsets[v], lists + offsets[v + 1], v) - lists);
  };
  std::int32_t edge = 0;
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    edges.starts[v] = edge;
    for (std::int32_t i = firstHigher(v); i < offsets[v + 1]; ++i) {
      edges.pairs[2 * edge] = v;
      edges.pairs[2 * edge + 1] = lists[i];
      ++edge;
    }
  }
  edges.starts[vertexCount] = edge;
  edges.count = edge;
#pragma omp parallel for if (vertexCount > kMeshParallelMinimum) schedule(dynamic, 4096)
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    const std::int32_t higher = firstHigher(v);
    for (std::int32_t i = offsets[v]; i < offsets[v + 1]; ++i) {
      const std::int32_t w = lists[i];
      if (i >= higher) {
        edges.slotEdges[i] = edges.starts[v] + (i - higher);
      } else {
        const std::int32_t* at = std::lower_bound(lists + offsets[w], lists + offsets[w + 1], v);
        edges.slotEdges[i] = edges.starts[w] + std::int32_t(at - lists) - firstHigher(w);
      }
    }
  }
  return true;
}

void ReleaseEdges(QRVMemoryContext& memory, MeshEdges& edges) {
  memory.Release(edges.pairs);
  memory.Release(edges.starts);
  memory.Release(edges.slotEdges);
  edges = {};
}

}  // namespace quillix
