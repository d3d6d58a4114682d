#include "python/src/mesh_searches.h"

#include <algorithm>

#include "core/mesh/path_chain.h"

namespace quillix::python {

const std::uint8_t* FlagsFromMask(std::span<const bool> blocked, std::vector<std::uint8_t>& flags) {
  flags.resize(blocked.size());
  // Read as bytes: a mask viewed from another 1-byte dtype may hold values other than 0 and 1,
  // and NumPy counts every one of them as true. At -O2 the compiler leaves the loop scalar
  // (a 10^6-vertex mask took 0.6 ms a search): simd asks for vectors.
  const std::uint8_t* bytes = reinterpret_cast<const std::uint8_t*>(blocked.data());
  std::uint8_t* out = flags.data();
  const std::size_t count = blocked.size();
#pragma omp simd
  for (std::size_t v = 0; v < count; ++v) out[v] = std::uint8_t(bytes[v] == 0);
  return out;
}

QRVStatus SearchableMesh::Build(std::span<const Vec3f> positions,
                                std::span<const std::int32_t> description) {
  componentCount_ = 0;
  const QRVStatus status = BuildPathGeometry(positions, description, geometry_);
  if (status != 0) return status;
  // Components are numbered 0, 1, ... without gaps: the count is the largest number plus one.
  const QRVGeometry& built = geometry_;
  const std::int32_t* numbers = built.ComponentNumbers();
  if (numbers != nullptr && built.VertexCount() > 0)
    componentCount_ = *std::max_element(numbers, numbers + built.VertexCount()) + 1;
  return status;
}

std::unique_ptr<SearchScratch> SearchableMesh::AcquireScratch() const {
  std::lock_guard<std::mutex> lock(poolMutex_);
  if (pool_.empty()) return std::make_unique<SearchScratch>();
  std::unique_ptr<SearchScratch> scratch = std::move(pool_.back());
  pool_.pop_back();
  return scratch;
}

void SearchableMesh::ReturnScratch(std::unique_ptr<SearchScratch> scratch) const {
  std::lock_guard<std::mutex> lock(poolMutex_);
  pool_.push_back(std::move(scratch));
}

QRVStatus SearchableMesh::Search(std::int32_t start, std::int32_t end, const std::uint8_t* flags,
                                 SearchScratch& scratch, std::int32_t& length) const {
  scratch.path.resize(std::size_t(std::max(geometry_.VertexCount(), 1)));
  std::int32_t* path = scratch.path.data();
  length = geometry_.VertexCount();
  QRVStatus status = 0;
  FindVertexPath(geometry_, start, end, path, length, 0, flags, status, geometry_.Memory(),
                 &scratch.work);
  return status;
}

void SearchableMesh::SearchPairs(std::span<const std::int32_t> ends, const std::uint8_t* flags,
                                 int threads, std::vector<std::vector<std::int32_t>>& paths) const {
  const std::ptrdiff_t count = std::ptrdiff_t(ends.size() / 2);
  paths.assign(std::size_t(count), {});
#pragma omp parallel num_threads(threads)
  {
    SearchScratch scratch;
#pragma omp for schedule(dynamic, 1)
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      std::int32_t length = 0;
      if (Search(ends[2 * k], ends[2 * k + 1], flags, scratch, length) == 0)
        paths[k].assign(scratch.path.begin(), scratch.path.begin() + length);
    }
  }
}

void SearchableMesh::Chain(std::span<const std::int32_t> indices, const std::uint8_t* flags,
                           std::vector<std::int32_t>& path) const {
  PathScratch scratch(geometry_.Memory());
  ChainPath(geometry_, indices, 0, flags, scratch, path);
}

}  // namespace quillix::python
