// The vertex-path search as first written, kept as the oracle of the tests and the baseline of
// the benchmarks: an unsorted open list in ascending vertex order, scanned for the first
// strictly smallest distance (the scan stops at a distance of exactly 0), neighbours relaxed in
// list order on strict improvement, stop at the end vertex. Costs the square of the vertex count.
#pragma once

#include <cmath>
#include <list>
#include <vector>

#include "core/mesh/vertex_path.h"
#include "kernel/geometry.h"

namespace quillix::testing {

// The path from `start` to `end` (empty when unreachable). `flags`: null or a byte per vertex,
// 0 blocking it. The geometry must hold its neighbour lists.
inline std::vector<std::int32_t> LiteralSearch(const QRVGeometry& geo, std::int32_t start,
                                               std::int32_t end, const std::uint8_t* flags) {
  const std::int32_t n = geo.VertexCount();
  const Vec3f* p = geo.Positions();
  const std::int32_t* offsets = geo.NeighbourOffsets();
  const std::int32_t* lists = geo.NeighbourLists();
  std::vector<float> distance(n, kUnreachedDistance);
  std::vector<std::int32_t> predecessor(n, -1);
  std::vector<std::uint8_t> open(n, 1);
  distance[start] = 0.0f;
  std::list<std::int32_t> list;
  for (std::int32_t v = 0; v < n; ++v) {
    if (flags == nullptr || flags[v] != 0) {
      list.push_back(v);
    } else {
      open[v] = 0;
    }
  }
  while (!list.empty()) {
    auto selected = list.begin();
    float best = kUnreachedDistance;
    for (auto it = list.begin(); it != list.end(); ++it) {
      if (distance[*it] < best) {
        best = distance[*it];
        selected = it;
        if (best == 0.0f) break;
      }
    }
    const std::int32_t v = *selected;
    list.erase(selected);
    open[v] = 0;
    if (distance[v] == kUnreachedDistance || v == end) break;
    for (std::int32_t i = offsets[v]; i < offsets[v + 1]; ++i) {
      const std::int32_t w = lists[i];
      if (open[w] != 1) continue;
      const float dx = p[v].x - p[w].x, dy = p[v].y - p[w].y, dz = p[v].z - p[w].z;
      const float candidate = distance[v] + std::sqrt(dy * dy + dx * dx + dz * dz);
      if (distance[w] > candidate) distance[w] = candidate, predecessor[w] = v;
    }
  }
  if (predecessor[end] == -1) return {};
  std::vector<std::int32_t> path;
  for (std::int32_t v = end; v != start; v = predecessor[v]) path.push_back(v);
  path.push_back(start);
  return {path.rbegin(), path.rend()};
}

}  // namespace quillix::testing
