#include "kernel/mesh_counts.h"

#include <cstring>
#include <limits>

namespace quillix {

namespace {

// Whether a polygon names one vertex twice; triangles and quads, nearly every polygon of a
// real mesh, compare their corners pairwise without a loop.
bool HasRepeatedCorner(const std::int32_t* c, std::int32_t size) {
  if (size == 3) return (c[0] == c[1]) | (c[0] == c[2]) | (c[1] == c[2]);
  if (size == 4) {
    return (c[0] == c[1]) | (c[0] == c[2]) | (c[0] == c[3]) | (c[1] == c[2]) | (c[1] == c[3]) |
           (c[2] == c[3]);
  }
  for (std::int32_t i = 1; i < size; ++i) {
    for (std::int32_t j = 0; j < i; ++j) {
      if (c[j] == c[i]) return true;
    }
  }
  return false;
}

}  // namespace

bool PolygonIsInvalid(const MeshView& mesh, std::int64_t firstNode, std::int32_t size) {
  if (size < 3) return true;
  const std::int32_t* corners = mesh.polygonIndices + firstNode;
  for (std::int32_t i = 0; i < size; ++i) {
    if (std::uint32_t(corners[i]) >= std::uint32_t(mesh.vertexCount)) return true;
  }
  return HasRepeatedCorner(corners, size);
}

std::int32_t CheckPolygons(const MeshView& mesh, std::uint8_t* seen,
                           VertexReferenceCounts& references) {
  std::int32_t invalid = 0;
  const auto vertexCount = std::uint32_t(mesh.vertexCount);
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < mesh.polygonCount; ++p) {
    const std::int32_t size = mesh.polygonSizes[p];
    const std::int32_t* corners = mesh.polygonIndices + node;
    bool outside = false;
    for (std::int32_t i = 0; i < size; ++i) {
      const std::int32_t v = corners[i];
      if (std::uint32_t(v) >= vertexCount) {
        outside = true;
      } else if (seen != nullptr) {
        seen[v] = 1;
      }
    }
    invalid += size < 3 || outside || HasRepeatedCorner(corners, size);
    node += size;
  }
  if (seen != nullptr) {
    std::int32_t referenced = 0;
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
