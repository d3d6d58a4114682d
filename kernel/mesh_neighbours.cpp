#include "kernel/mesh_neighbours.h"

#include <algorithm>
#include <cmath>

namespace quillix {

// Rows hold a few dozen incidences at most on ordinary meshes; an insertion sort handles those
// without the general sort's set-up.
void SortIncidenceRow(std::int32_t* begin, std::int32_t* end) {
  if (end - begin > 32) {
    std::sort(begin, end);
    return;
  }
  for (std::int32_t* i = begin + 1; i < end; ++i) {
    const std::int32_t value = *i;
    std::int32_t* j = i;
    for (; j > begin && *(j - 1) > value; --j) *j = *(j - 1);
    *j = value;
  }
}

bool BuildEdgeIncidences(const MeshView& mesh, QRVMemoryContext& memory,
                         EdgeIncidences& incidences) {
  const std::int32_t vertexCount = mesh.vertexCount;
  incidences.offsets = memory.AllocateScratchArray<std::int32_t>(std::size_t(vertexCount) + 1);
  if (incidences.offsets == nullptr) return false;
  incidences.offsetBytes = (std::size_t(vertexCount) + 1) * sizeof(std::int32_t);
  std::int32_t* offsets = incidences.offsets;  // a scratch block starts at zero
  // Each polygon's closing edge first, then the rest in order; readers sort the rows, so the
  // order in which edges arrive does not matter.
  const auto forEachEdge = [&](auto&& edge) {
    const std::int32_t* corners = mesh.polygonIndices;
    for (std::int32_t p = 0; p < mesh.polygonCount; ++p) {
      const std::int32_t size = mesh.polygonSizes[p];
      if (size == 0) continue;
      std::int32_t previous = corners[size - 1];
      for (std::int32_t k = 0; k < size; ++k) {
        const std::int32_t current = corners[k];
        if (previous < current) {
          edge(previous, current);
        } else if (current < previous) {
          edge(current, previous);
        }
        previous = current;
      }
      corners += size;
    }
  };
  // At most one incidence per polygon node, and the node count fits 32 bits.
  forEachEdge([&](std::int32_t low, std::int32_t) { ++offsets[low + 1]; });
  for (std::int32_t v = 0; v < vertexCount; ++v) offsets[v + 1] += offsets[v];
  incidences.items = memory.AllocateScratchArray<std::int32_t>(std::size_t(offsets[vertexCount]));
  if (incidences.items == nullptr) return false;
  incidences.itemBytes = std::size_t(offsets[vertexCount]) * sizeof(std::int32_t);
  // Fill from the back of each range using the end offsets, then shift the offsets back.
  std::int32_t* items = incidences.items;
  forEachEdge([&](std::int32_t low, std::int32_t high) { items[offsets[low]++] = high; });
  for (std::int32_t v = vertexCount; v > 0; --v) offsets[v] = offsets[v - 1];
  offsets[0] = 0;
  return true;
}

void ReleaseEdgeIncidences(QRVMemoryContext& memory, EdgeIncidences& incidences) {
  memory.ReleaseScratch(incidences.offsets, incidences.offsetBytes);
  memory.ReleaseScratch(incidences.items, incidences.itemBytes);
  incidences = {};
}

bool BuildNeighbours(const MeshView& mesh, QRVMemoryContext& memory, MeshNeighbours& neighbours) {
  neighbours = {};
  EdgeIncidences incidences;
  const auto fail = [&] {
    ReleaseEdgeIncidences(memory, incidences);
    ReleaseNeighbours(memory, neighbours);
    return false;
  };
  const std::int32_t vertexCount = mesh.vertexCount;
  if (!BuildEdgeIncidences(mesh, memory, incidences)) return fail();
  neighbours.offsets = memory.AllocateArray<std::int32_t>(std::size_t(vertexCount) + 1);
  if (neighbours.offsets == nullptr) return fail();
  std::int32_t* offsets = neighbours.offsets;
  std::fill(offsets, offsets + vertexCount + 1, 0);

  // One pass sorts each row and drops its repeats, moving the survivors forward in place,
  // and counts every edge at its higher end: afterwards row v lists v's higher neighbours once
  // each (the edges by lower then higher end) and offsets[w] holds w's lower-neighbour count.
  std::int32_t* rows = incidences.offsets;
  std::int32_t* higher = incidences.items;
  std::int32_t edgeCount = 0;
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    const std::int32_t begin = rows[v], end = rows[v + 1];
    rows[v] = edgeCount;
    SortIncidenceRow(higher + begin, higher + end);
    for (std::int32_t i = begin; i < end; ++i) {
      const std::int32_t w = higher[i];
      if (i == begin || w != higher[i - 1]) higher[edgeCount++] = w, ++offsets[w];
    }
  }
  rows[vertexCount] = edgeCount;
  // The repeats' pages go back before the lists are allocated.
  const std::size_t edgeBytes = std::size_t(edgeCount) * sizeof(std::int32_t);
  if (edgeBytes > 0) {
    memory.ReleaseScratch(higher, incidences.itemBytes, edgeBytes);
    incidences.itemBytes = edgeBytes;
  }
  std::int32_t start = 0;
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    const std::int32_t count = offsets[v] + rows[v + 1] - rows[v];
    offsets[v] = start;
    start += count;
  }
  offsets[vertexCount] = start;

  neighbours.lists = memory.AllocateArray<std::int32_t>(std::size_t(start));
  neighbours.counts = memory.AllocateArray<std::uint8_t>(std::size_t(vertexCount));
  if (neighbours.lists == nullptr || neighbours.counts == nullptr) return fail();
  // In ascending order of u, u joins the front of each higher neighbour's list, so every front
  // fills in ascending order, and is complete by the time its own vertex comes: offsets[u] then
  // points just past it, where u's higher neighbours follow. offsets[v] thus ends at v's first
  // higher slot, and the shift below turns those back into list starts.
  std::int32_t* lists = neighbours.lists;
  for (std::int32_t u = 0; u < vertexCount; ++u) {
    std::int32_t* tail = lists + offsets[u];
    for (std::int32_t i = rows[u]; i < rows[u + 1]; ++i) {
      const std::int32_t w = higher[i];
      *tail++ = w;
      lists[offsets[w]++] = u;
    }
  }
  for (std::int32_t v = vertexCount; v > 0; --v)
    offsets[v] = offsets[v - 1] + rows[v] - rows[v - 1];
  offsets[0] = 0;
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    neighbours.counts[v] = std::uint8_t(std::min(offsets[v + 1] - offsets[v], 255));
  }
  ReleaseEdgeIncidences(memory, incidences);
  return true;
}

void ReleaseNeighbours(QRVMemoryContext& memory, MeshNeighbours& neighbours) {
  memory.Release(neighbours.counts);
  memory.Release(neighbours.offsets);
  memory.Release(neighbours.lists);
  neighbours = {};
}

NeighbourStep* ComputeNeighbourSteps(const MeshView& mesh, const MeshNeighbours& neighbours,
                                     QRVMemoryContext& memory) {
  const std::int32_t vertexCount = mesh.vertexCount;
  const std::int32_t* offsets = neighbours.offsets;
  NeighbourStep* steps = memory.AllocateArray<NeighbourStep>(std::size_t(offsets[vertexCount]));
  if (steps == nullptr) return nullptr;
    // (a - b) and (b - a) round to exact negatives, so the length is the same from either end.
#pragma omp parallel for if (vertexCount > kMeshParallelMinimum) schedule(dynamic, 4096)
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    const Vec3f& p = mesh.positions[v];
    for (std::int32_t i = offsets[v]; i < offsets[v + 1]; ++i) {
      const std::int32_t w = neighbours.lists[i];
      const Vec3f& q = mesh.positions[w];
      const float dx = p.x - q.x, dy = p.y - q.y, dz = p.z - q.z;
      steps[i] = {w, std::sqrt(dy * dy + dx * dx + dz * dz)};
    }
  }
  return steps;
}

}  // namespace quillix
