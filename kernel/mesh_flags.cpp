#include "kernel/mesh_flags.h"

#include <cstring>

#include "kernel/mesh_counts.h"
#include "kernel/mesh_neighbours.h"

namespace quillix {
namespace {

// While the flags are built, the bits from kDistinctUnit up count a vertex's distinct
// neighbours, stopping at 256: the pole test needs no more.
constexpr std::uint32_t kDistinctUnit = 1u << 16;
constexpr std::uint32_t kDistinctStop = 256u * kDistinctUnit;

}  // namespace

std::uint32_t* ComputeVertexFlags(const MeshView& mesh, QRVMemoryContext& memory) {
  const std::int32_t vertexCount = mesh.vertexCount;
  EdgeIncidences incidences;
  std::uint32_t* flags = memory.AllocateArray<std::uint32_t>(std::size_t(vertexCount));
  if (flags == nullptr || !BuildEdgeIncidences(mesh, memory, incidences)) {
    ReleaseEdgeIncidences(memory, incidences);
    memory.Release(flags);
    return nullptr;
  }
  std::memset(flags, 0, std::size_t(vertexCount) * sizeof(std::uint32_t));
  for (std::int32_t n = 0; n < mesh.nodeCount; ++n)
    flags[mesh.polygonIndices[n]] |= kVertexFlagReferenced;
  // A run of equal items in a sorted incidence row is one edge, as long as the number of polygons
  // using it; its bits go to both ends, each of which counts it as a distinct neighbour.
  const auto mark = [flags](std::int32_t v, std::uint32_t bits) {
    flags[v] |= bits;
    if (flags[v] < kDistinctStop) flags[v] += kDistinctUnit;
  };
  const std::int32_t* offsets = incidences.offsets;
  std::int32_t* items = incidences.items;
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    SortIncidenceRow(items + offsets[v], items + offsets[v + 1]);
    for (std::int32_t i = offsets[v]; i < offsets[v + 1];) {
      std::int32_t j = i;
      while (j < offsets[v + 1] && items[j] == items[i]) ++j;
      const std::uint32_t bits =
          (j - i == 1 ? kVertexFlagBorder : 0u) | (j - i > 2 ? kVertexFlagNonManifold : 0u);
      mark(v, bits);
      mark(items[i], bits);
      i = j;
    }
  }
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    flags[v] =
        (flags[v] & (kDistinctUnit - 1)) | (flags[v] >= kDistinctStop ? kVertexFlagPole : 0u);
  }
  ReleaseEdgeIncidences(memory, incidences);
  return flags;
}

std::uint8_t* ComputePolygonFlags(const MeshView& mesh, const std::uint32_t* vertexFlags,
                                  bool anyInvalid, QRVMemoryContext& memory) {
  std::uint8_t* flags = memory.AllocateArray<std::uint8_t>(std::size_t(mesh.polygonCount));
  if (flags == nullptr) return nullptr;
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < mesh.polygonCount; ++p) {
    const std::int32_t size = mesh.polygonSizes[p];
    std::uint8_t bits = 0;
    if (anyInvalid && PolygonIsInvalid(mesh, node, size)) bits |= kPolygonFlagInvalid;
    bool allBorder = size > 0;
    for (std::int32_t k = 0; k < size && allBorder; ++k) {
      const std::int32_t v = mesh.polygonIndices[node + k];
      allBorder = v >= 0 && v < mesh.vertexCount && (vertexFlags[v] & kVertexFlagBorder) != 0;
    }
    if (allBorder) bits |= kPolygonFlagAllBorder;
    flags[p] = bits;
    node += size;
  }
  return flags;
}

}  // namespace quillix
