#include "kernel/mesh_neighbours.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quillix {
namespace {

// Rows hold a few dozen incidences at most on ordinary meshes; an insertion sort handles those
// without the general sort's set-up.
void SortRow(std::int32_t* begin, std::int32_t* end) {
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

}  // namespace

bool BuildEdgeIncidences(const MeshView& mesh, QRVMemoryContext& memory,
                         EdgeIncidences& incidences) {
  const std::int32_t vertexCount = mesh.vertexCount;
  incidences.offsets = memory.AllocateArray<std::int32_t>(std::size_t(vertexCount) + 1);
  if (incidences.offsets == nullptr) return false;
  std::int32_t* offsets = incidences.offsets;
  std::fill(offsets, offsets + vertexCount + 1, 0);
  // Each polygon's closing edge first, then the rest in order; the rows are sorted afterwards,
  // so the order in which edges arrive does not matter.
  const auto forEachEdge = [&](auto&& edge) {
    const std::int32_t* corners = mesh.polygonIndices;
    for (std::int32_t p = 0; p < mesh.polygonCount; ++p) {
      const std::int32_t size = mesh.polygonSizes[p];
      if (size == 0) continue;
      std::int32_t previous = corners[size - 1];
      for (std::int32_t k = 0; k < size; ++k) {
        const std::int32_t current = corners[k];
        if (previous != current) edge(previous, current);
        previous = current;
      }
      corners += size;
    }
  };
  std::int64_t total = 0;
  forEachEdge(
      [&](std::int32_t a, std::int32_t b) { ++offsets[a + 1], ++offsets[b + 1], total += 2; });
  if (total > std::numeric_limits<std::int32_t>::max()) return false;
  for (std::int32_t v = 0; v < vertexCount; ++v) offsets[v + 1] += offsets[v];
  incidences.items = memory.AllocateArray<std::int32_t>(std::size_t(total));
  if (incidences.items == nullptr) return false;
  // Fill from the back of each range using the end offsets, then shift the offsets back.
  std::int32_t* items = incidences.items;
  forEachEdge([&](std::int32_t a, std::int32_t b) {
    items[offsets[a]++] = b;
    items[offsets[b]++] = a;
  });
  for (std::int32_t v = vertexCount; v > 0; --v) offsets[v] = offsets[v - 1];
  offsets[0] = 0;
#pragma omp parallel for if (vertexCount > kMeshParallelMinimum) schedule(dynamic, 4096)
  for (std::int32_t v = 0; v < vertexCount; ++v)
    SortRow(items + offsets[v], items + offsets[v + 1]);
  return true;
}

void ReleaseEdgeIncidences(QRVMemoryContext& memory, EdgeIncidences& incidences) {
  memory.Release(incidences.offsets);
  memory.Release(incidences.items);
  incidences = {};
}

bool BuildNeighbours(const MeshView& mesh, QRVMemoryContext& memory, MeshNeighbours& neighbours) {
  neighbours = {};
  EdgeIncidences incidences;
  if (!BuildEdgeIncidences(mesh, memory, incidences)) {
    ReleaseEdgeIncidences(memory, incidences);
    return false;
  }
  // Drop repeats within each sorted range, moving the survivors forward in place; the
  // incidence offsets become the neighbour offsets.
  const std::int32_t vertexCount = mesh.vertexCount;
  std::int32_t* offsets = incidences.offsets;
  std::int32_t* items = incidences.items;
  std::int32_t write = 0;
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    const std::int32_t begin = offsets[v], end = offsets[v + 1];
    offsets[v] = write;
    for (std::int32_t i = begin; i < end; ++i) {
      if (i == begin || items[i] != items[i - 1]) items[write++] = items[i];
    }
  }
  offsets[vertexCount] = write;
  neighbours.counts = memory.AllocateArray<std::uint8_t>(std::size_t(vertexCount));
  if (neighbours.counts == nullptr) {
    ReleaseEdgeIncidences(memory, incidences);
    return false;
  }
  // The incidence block becomes the lists, cut to their exact size where they lie.
  neighbours.lists =
      static_cast<std::int32_t*>(memory.Shrink(items, std::size_t(write) * sizeof(std::int32_t)));
  neighbours.offsets = offsets;
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    neighbours.counts[v] = std::uint8_t(std::min(offsets[v + 1] - offsets[v], 255));
  }
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
