#include "kernel/mesh_counts.h"

#include <cstring>
#include <limits>

namespace quillix {

bool PolygonIsInvalid(const MeshView& mesh, std::int64_t firstNode, std::int32_t size) {
  if (size < 3) return true;
  const std::int32_t* corners = mesh.polygonIndices + firstNode;
  for (std::int32_t i = 0; i < size; ++i) {
    if (corners[i] < 0 || corners[i] >= mesh.vertexCount) return true;
    for (std::int32_t j = 0; j < i; ++j) {
      if (corners[j] == corners[i]) return true;
    }
  }
  return false;
}

std::int32_t CheckPolygons(const MeshView& mesh, std::uint8_t* seen,
                           VertexReferenceCounts& references) {
  std::int32_t invalid = 0, referenced = 0;
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < mesh.polygonCount; ++p) {
    const std::int32_t size = mesh.polygonSizes[p];
    const std::int32_t* corners = mesh.polygonIndices + node;
    bool bad = size < 3;
    for (std::int32_t i = 0; i < size; ++i) {
      const std::int32_t v = corners[i];
      if (v < 0 || v >= mesh.vertexCount) {
        bad = true;
        continue;
      }
      if (seen != nullptr) seen[v] = 1;
      for (std::int32_t j = 0; j < i && !bad; ++j) bad = corners[j] == v;
    }
    invalid += bad;
    node += size;
  }
  if (seen != nullptr) {
    for (std::int32_t v = 0; v < mesh.vertexCount; ++v) referenced += seen[v];
    references = {referenced, mesh.vertexCount - referenced};
  }
  return invalid;
}

bool CountPolygonSizes(const MeshView& mesh, PolygonSizeCounts& counts) {
  std::int64_t wide[4] = {};
  for (std::int32_t p = 0; p < mesh.polygonCount; ++p) {
    const std::int32_t size = mesh.polygonSizes[p];
    wide[size == 3 ? 0 : size == 4 ? 1 : 2] += size >= 3;
    if (size >= 3) wide[3] += size - 2;
  }
  for (std::int64_t count : wide) {
    if (count > std::numeric_limits<std::int32_t>::max()) return false;
  }
  counts = {std::int32_t(wide[0]), std::int32_t(wide[1]), std::int32_t(wide[2]),
            std::int32_t(wide[3])};
  return true;
}

}  // namespace quillix
