#include "core/mesh/path_chain.h"

#include <algorithm>
#include <cstring>

#include "kernel/status_codes.h"

namespace quillix {

QRVStatus BuildPathGeometry(std::span<const Vec3f> positions,
                            std::span<const std::int32_t> description, QRVGeometry& geometry) {
  geometry.Clear();
  QRVMemoryContext& memory = geometry.Memory();
  std::size_t polygons = 0, indexCount = 0;
  for (std::int32_t value : description) (value < 0 ? polygons : indexCount) += 1;

  // Temporary arrays go through the memory context like the geometry's own.
  Vec3f* points = memory.AllocateArray<Vec3f>(positions.size());
  // One counter more than closed polygons: indices after the last negative value count into a
  // polygon that is never closed and never passed on.
  std::uint8_t* sizes = memory.AllocateArray<std::uint8_t>(polygons + 1);
  std::int32_t* indices = memory.AllocateArray<std::int32_t>(indexCount);
  const auto release = [&] {
    memory.Release(points);
    memory.Release(sizes);
    memory.Release(indices);
  };
  if (points == nullptr || sizes == nullptr || indices == nullptr) {
    release();
    return kStatusNoMemory;
  }
  if (!positions.empty()) std::memcpy(points, positions.data(), positions.size_bytes());
  std::memset(sizes, 0, polygons + 1);
  std::size_t polygon = 0, node = 0;
  for (std::int32_t value : description) {
    if (value >= 0) {
      if (polygon == polygons) break;  // indices after the last closer belong to no polygon
      ++sizes[polygon];                // an 8-bit count: 256 corners wrap to 0
      indices[node++] = value;
    } else {
      if (sizes[polygon] == 255) {
        release();
        return kStatusPolygonTooLarge;
      }
      ++polygon;
    }
  }
  QRVStatus status = geometry.Set(points, std::int32_t(positions.size()), kEncodingFloat, sizes,
                                  indices, std::int32_t(polygons), kDescriptionByteSizes);
  release();
  if (status == kStatusOk) {
    if (geometry.ComponentNumbers() == nullptr || geometry.NeighbourLists() == nullptr) {
      status = kStatusDynamicGeometryFailed;
      geometry.Clear();
    } else {
      geometry.NeighbourSteps();  // optional: the search measures steps itself without it
    }
  }
  return status;
}

std::int32_t* PathScratch::PathArray(std::int32_t vertexCount) {
  if (path_ == nullptr || pathCapacity_ < vertexCount) {
    memory_.Release(path_);
    pathCapacity_ = 0;
    path_ = memory_.AllocateArray<std::int32_t>(std::size_t(std::max(vertexCount, 1)));
    if (path_ == nullptr) return nullptr;
    pathCapacity_ = vertexCount;
  }
  return path_;
}

bool ChainPath(const QRVGeometry& geometry, std::span<const std::int32_t> init,
               std::int32_t algorithm, const std::uint8_t* vertexFlags, PathScratch& scratch,
               std::vector<std::int32_t>& path) {
  path.clear();
  if (init.size() < 2) return false;
  const std::int32_t vertexCount = geometry.VertexCount();
  std::int32_t* segment = scratch.PathArray(vertexCount);
  if (segment == nullptr) return false;
  for (std::size_t k = 0; k + 1 < init.size(); ++k) {
    std::int32_t* into = segment;
    std::int32_t length = vertexCount;
    QRVStatus status = kStatusOk;
    if (!FindVertexPath(geometry, init[k], init[k + 1], into, length, algorithm, vertexFlags,
                        status, scratch.Memory(), &scratch.SearchWork())) {
      path.clear();
      return false;
    }
    // Each later segment starts with the vertex the previous one ended with.
    path.insert(path.end(), into + (k == 0 ? 0 : 1), into + length);
  }
  return true;
}

}  // namespace quillix
