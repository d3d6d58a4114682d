// Shortest vertex paths chained through several requested vertices of a mesh given as a
// host's polygonal description: build the geometry once, then chain as often as needed.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/math/math_types.h"
#include "core/mesh/vertex_path.h"
#include "kernel/geometry.h"
#include "kernel/memory_context.h"
#include "kernel/status.h"

namespace quillix {

// Builds `geometry` for path searches from #V × 3 `positions` and a polygonal `description`:
// vertex indices, each polygon closed by a negative value; indices after the last negative
// value belong to no polygon. Polygon sizes are counted in 8 bits: a polygon closed while its
// count is exactly 255 stops the build with 101, larger ones wrap silently (and so garble the
// polygons after them). Invalid polygons and unreferenced vertices are then dropped
// (QRVGeometry::Set) and the neighbour lists, component numbers and neighbour steps computed.
// Temporary arrays come from the geometry's memory context.
// Returns 0, 101, 9 (memory refused), 78 (neighbours or components failed) or a code of
// QRVGeometry::Set; on failure `geometry` is empty.
QRVStatus BuildPathGeometry(std::span<const Vec3f> positions,
                            std::span<const std::int32_t> description, QRVGeometry& geometry);

// Scratch that ChainPath reuses from one call to the next: a path array of vertex count
// entries and the search's work (VertexPathWork), all accounted by `memory`, grown only when a
// larger mesh needs more and released with the scratch. One scratch per thread.
class PathScratch {
 public:
  explicit PathScratch(QRVMemoryContext& memory) : memory_(memory), work_(&memory) {}
  ~PathScratch() { memory_.Release(path_); }
  PathScratch(const PathScratch&) = delete;
  PathScratch& operator=(const PathScratch&) = delete;

  // An array of at least `vertexCount` (and at least 1) entries; null when memory refuses.
  std::int32_t* PathArray(std::int32_t vertexCount);
  QRVMemoryContext& Memory() const { return memory_; }
  VertexPathWork& SearchWork() { return work_; }

 private:
  QRVMemoryContext& memory_;
  std::int32_t* path_ = nullptr;
  std::int32_t pathCapacity_ = 0;
  VertexPathWork work_;
};

// Chains the shortest paths init[0] → init[1] → ... → init[#I - 1] on `geometry` (built by
// BuildPathGeometry; only read, so many threads may chain on one geometry, each with its own
// scratch) into `path`, each joint vertex written once: the first segment whole, every later
// one without its first vertex. `algorithm` and `vertexFlags` (null, or one byte per vertex,
// 0 blocking it) go to every FindVertexPath. `path` is emptied first and stays empty when init
// has fewer than 2 entries or any segment fails (the remaining pairs are not searched; equal
// consecutive indices fail). Returns whether a path was written.
bool ChainPath(const QRVGeometry& geometry, std::span<const std::int32_t> init,
               std::int32_t algorithm, const std::uint8_t* vertexFlags, PathScratch& scratch,
               std::vector<std::int32_t>& path);

}  // namespace quillix
