// The searches behind quillix.Mesh without anything of Python, so that the threaded C++ test
// runs exactly what the binding runs (the binding adds argument conversion and the GIL).
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "core/math/math_types.h"
#include "core/mesh/vertex_path.h"
#include "kernel/geometry.h"
#include "kernel/status.h"

namespace quillix::python {

// The work arrays of one search, kept between searches so that a mesh searched many times
// allocates them once per concurrent caller.
struct SearchScratch {
  VertexPathWork work;
  std::vector<std::int32_t> path;
  std::vector<std::uint8_t> flags;  // the search's vertex flags (FlagsFromMask)
};

// The search's vertex flags (0 blocks) for a mask of blocked vertices, written into `flags`
// (resized to the mask's size; a reused buffer costs no allocation). Returns flags.data().
const std::uint8_t* FlagsFromMask(std::span<const bool> blocked, std::vector<std::uint8_t>& flags);

// The path node's mesh, built once and then only read: any number of threads may search it at
// once. Everything derived (neighbour lists, components, steps, the component count) is
// computed by Build; afterwards only the geometry's read-only views are used, so no search
// computes anything lazily. The only shared mutable state is the scratch pool, under its mutex.
class SearchableMesh {
 public:
  // Builds the geometry from #V × 3 `positions` and a polygonal `description` (each polygon
  // closed by a negative value) as the path node does (BuildPathGeometry). Returns its status;
  // on failure the mesh is empty. Not to be called while other threads search.
  QRVStatus Build(std::span<const Vec3f> positions, std::span<const std::int32_t> description);

  const QRVGeometry& Geometry() const { return geometry_; }
  std::int32_t VertexCount() const { return geometry_.VertexCount(); }
  std::int32_t PolygonCount() const { return geometry_.PolygonCount(); }
  std::int32_t ComponentCount() const { return componentCount_; }

  // A scratch for one search: reused from the pool, or new when every pooled one is in use.
  // Hand it back with ReturnScratch.
  std::unique_ptr<SearchScratch> AcquireScratch() const;
  void ReturnScratch(std::unique_ptr<SearchScratch> scratch) const;

  // One search from `start` to `end` into `scratch.path` (FindVertexPath through the
  // geometry's memory context); `length` receives the path's vertex count (0 on failure).
  // `flags`: null, or one byte per vertex, 0 blocking it. Returns the search's status.
  QRVStatus Search(std::int32_t start, std::int32_t end, const std::uint8_t* flags,
                   SearchScratch& scratch, std::int32_t& length) const;

  // Searches the #K (start, end) pairs of `ends` (2 × #K values) on `threads` OpenMP threads,
  // each with its own scratch. paths[k] (resized to #K here) is the k-th path, empty where the
  // search fails.
  void SearchPairs(std::span<const std::int32_t> ends, const std::uint8_t* flags, int threads,
                   std::vector<std::vector<std::int32_t>>& paths) const;

  // The node's chained path through `indices` (ChainPath with a scratch of its own) into
  // `path`; empty when fewer than two indices are given or a segment has no path.
  void Chain(std::span<const std::int32_t> indices, const std::uint8_t* flags,
             std::vector<std::int32_t>& path) const;

 private:
  QRVGeometry geometry_;
  std::int32_t componentCount_ = 0;
  mutable std::mutex poolMutex_;
  mutable std::vector<std::unique_ptr<SearchScratch>> pool_;
};

}  // namespace quillix::python
