// QRVGeometry's clean-up: removal of invalid and degenerate polygons and of unreferenced
// vertices, keeping the survivors in their order.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "kernel/geometry.h"
#include "kernel/status_codes.h"

namespace quillix {

QRVStatus QRVGeometry::CleanUp(bool removeUnreferencedVertices, bool removeInvalidPolygons,
                               bool removeDegeneratePolygons) {
  if (positions_ == nullptr) return kStatusOk;
  const bool unreferencedWork = removeUnreferencedVertices && UnreferencedVertexCount() > 0;
  const std::int32_t invalid = removeInvalidPolygons ? InvalidPolygonCount() : 0;
  if (!unreferencedWork && invalid == 0 && !removeDegeneratePolygons) return kStatusOk;

  std::int64_t toRemove = invalid;
  const float* measures = nullptr;
  const auto degenerate = [](float m) {
    return std::isnan(m) || (std::isfinite(m) && std::fabs(m) < 1e-23f);
  };
  if (removeDegeneratePolygons && polygonCount_ > 0) {
    measures = PolygonMeasures();
    if (measures == nullptr) {
      Clear();
      return kStatusDynamicGeometryFailed;
    }
    for (std::int32_t p = 0; p < polygonCount_; ++p) toRemove += degenerate(measures[p]);
  }

  QRVStatus status = kStatusOk;
  if (toRemove > 0) {
    std::int32_t* list = Alloc<std::int32_t>(std::size_t(toRemove));
    if (list == nullptr) return kStatusNoMemory;
    std::int64_t n = 0;
    if (invalid > 0) {
      const std::uint8_t* flags = PolygonFlags();
      if (flags == nullptr) {
        Free(list);
        Clear();
        return kStatusDynamicGeometryFailed;
      }
      for (std::int32_t p = 0; p < polygonCount_ && n < toRemove; ++p) {
        if (flags[p] & kPolygonFlagInvalid) list[n++] = p;
      }
    }
    if (measures != nullptr) {
      for (std::int32_t p = 0; p < polygonCount_ && n < toRemove; ++p) {
        if (degenerate(measures[p])) list[n++] = p;
      }
    }
    status = RemovePolygons(list, std::int32_t(n));
    Free(list);
  }
  if (status == kStatusOk && removeUnreferencedVertices && UnreferencedVertexCount() > 0) {
    status = RemoveUnreferencedVertices();
  }
  Reset(kDerivedAll);
  return status;
}

QRVStatus QRVGeometry::RemovePolygons(const std::int32_t* polygons, std::int32_t count) {
  if (count <= 0) return kStatusOk;
  if (polygons == nullptr) return kStatusIllegalParameter;
  std::uint8_t* drop = Alloc<std::uint8_t>(std::size_t(std::max(polygonCount_, 1)));
  if (drop == nullptr) return kStatusNoMemory;
  std::memset(drop, 0, std::size_t(polygonCount_));
  for (std::int32_t i = 0; i < count; ++i) {
    if (polygons[i] < 0 || polygons[i] >= polygonCount_) {
      Free(drop);
      return kStatusIllegalParameter;
    }
    drop[polygons[i]] = 1;
  }
  std::int32_t keptPolygons = 0;
  std::int64_t keptNodes = 0;
  for (std::int32_t p = 0; p < polygonCount_; ++p) {
    if (!drop[p]) ++keptPolygons, keptNodes += polygonSizes_[p];
  }

  // Allocate every new array first, so that a refusal changes nothing.
  std::uint8_t* sizes = Alloc<std::uint8_t>(std::size_t(keptPolygons));
  std::int32_t* nodeIndices = Alloc<std::int32_t>(std::size_t(keptNodes));
  Vec3f* channelValues[3] = {};
  std::int32_t* channelIndices[3] = {};
  bool ok = sizes != nullptr && nodeIndices != nullptr;
  for (int c = 0; c < 3 && ok; ++c) {
    if (!channels_[c].perNode || channels_[c].values == nullptr) continue;
    if (channels_[c].indices != nullptr) {
      ok = (channelIndices[c] = Alloc<std::int32_t>(std::size_t(keptNodes))) != nullptr;
    } else {
      ok = (channelValues[c] = Alloc<Vec3f>(std::size_t(keptNodes))) != nullptr;
    }
  }
  if (!ok) {
    Free(drop), Free(sizes), Free(nodeIndices);
    for (int c = 0; c < 3; ++c) Free(channelValues[c]), Free(channelIndices[c]);
    return kStatusNoMemory;
  }

  std::int64_t from = 0, to = 0;
  std::int32_t polygon = 0;
  for (std::int32_t p = 0; p < polygonCount_; ++p) {
    const std::int32_t size = polygonSizes_[p];
    if (!drop[p]) {
      sizes[polygon++] = std::uint8_t(size);
      for (std::int32_t k = 0; k < size; ++k) {
        nodeIndices[to + k] = polygonIndices_[from + k];
        for (int c = 0; c < 3; ++c) {
          if (channelIndices[c] != nullptr)
            channelIndices[c][to + k] = channels_[c].indices[from + k];
          if (channelValues[c] != nullptr) channelValues[c][to + k] = channels_[c].values[from + k];
        }
      }
      to += size;
    }
    from += size;
  }
  Free(drop), Free(polygonSizes_), Free(polygonIndices_);
  polygonSizes_ = sizes;
  polygonIndices_ = nodeIndices;
  polygonCount_ = keptPolygons;
  nodeCount_ = std::int32_t(keptNodes);
  for (int c = 0; c < 3; ++c) {
    if (channelIndices[c] != nullptr)
      Free(channels_[c].indices), channels_[c].indices = channelIndices[c];
    if (channelValues[c] != nullptr) {
      Free(channels_[c].values);
      channels_[c].values = channelValues[c];
      channels_[c].valueCount = nodeCount_;
    }
  }
  Reset(kDerivedAll);
  return kStatusOk;
}

QRVStatus QRVGeometry::RemoveUnreferencedVertices() {
  if (!Usable()) return kStatusOk;
  std::int32_t* newIndex = Alloc<std::int32_t>(std::size_t(vertexCount_));
  if (newIndex == nullptr) return kStatusNoMemory;
  std::fill(newIndex, newIndex + vertexCount_, -1);
  for (std::int32_t n = 0; n < nodeCount_; ++n) newIndex[polygonIndices_[n]] = 0;
  std::int32_t kept = 0;
  for (std::int32_t v = 0; v < vertexCount_; ++v) {
    if (newIndex[v] == 0) newIndex[v] = kept++;
  }
  if (kept == vertexCount_) {
    Free(newIndex);
    return kStatusOk;
  }

  // Every surviving per-vertex array is rebuilt at its exact new size before anything changes.
  const auto compact = [&](const Vec3f* from) -> Vec3f* {
    Vec3f* to = Alloc<Vec3f>(std::size_t(std::max(kept, 1)));
    if (to == nullptr) return nullptr;
    if (kept == 0) to[0] = {};
    for (std::int32_t v = 0; v < vertexCount_; ++v) {
      if (newIndex[v] >= 0) to[newIndex[v]] = from[v];
    }
    return to;
  };
  Vec3f* positions = compact(positions_);
  Vec3f* motion = motion_ != nullptr ? compact(motion_) : nullptr;
  Vec3f* channelValues[3] = {};
  bool ok = positions != nullptr && (motion_ == nullptr || motion != nullptr);
  for (int c = 0; c < 3 && ok; ++c) {
    if (channels_[c].values != nullptr && !channels_[c].perNode) {
      ok = (channelValues[c] = compact(channels_[c].values)) != nullptr;
    }
  }
  if (!ok) {
    Free(newIndex), Free(positions), Free(motion);
    for (Vec3f* values : channelValues) Free(values);
    return kStatusNoMemory;
  }
  for (std::int32_t n = 0; n < nodeCount_; ++n) polygonIndices_[n] = newIndex[polygonIndices_[n]];
  Free(newIndex), Free(positions_), Free(motion_);
  positions_ = positions;
  motion_ = motion;
  for (int c = 0; c < 3; ++c) {
    if (channelValues[c] != nullptr) {
      Free(channels_[c].values);
      channels_[c].values = channelValues[c];
      channels_[c].valueCount = kept;
    }
  }
  vertexCount_ = kept;
  Reset(kDerivedAll);
  return kStatusOk;
}

}  // namespace quillix
