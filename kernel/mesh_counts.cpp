#include "kernel/mesh_counts.h"

#include <cstring>
#include <limits>

namespace quillix {

bool CountVertexReferences(const MeshView& mesh, QRVMemoryContext& memory,
                           VertexReferenceCounts& counts) {
  std::uint8_t* seen = memory.AllocateArray<std::uint8_t>(std::size_t(mesh.vertexCount));
  if (seen == nullptr) return false;
  std::memset(seen, 0, std::size_t(mesh.vertexCount));
  for (std::int32_t n = 0; n < mesh.nodeCount; ++n) {
    const std::int32_t v = mesh.polygonIndices[n];
    if (v >= 0 && v < mesh.vertexCount) seen[v] = 1;
  }
  std::int32_t referenced = 0;
  for (std::int32_t v = 0; v < mesh.vertexCount; ++v) referenced += seen[v];
  memory.Release(seen);
  counts.referenced = referenced;
  counts.unreferenced = mesh.vertexCount - referenced;
  return true;
}

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

std::int32_t CountInvalidPolygons(const MeshView& mesh) {
  std::int32_t invalid = 0;
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < mesh.polygonCount; ++p) {
    invalid += PolygonIsInvalid(mesh, node, mesh.polygonSizes[p]);
    node += mesh.polygonSizes[p];
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
