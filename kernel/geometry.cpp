#include "kernel/geometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "core/math/half_float.h"
#include "kernel/octree.h"
#include "kernel/status_codes.h"

namespace quillix {
namespace {

// Below this many vertices a parallel loop costs more in thread wake-ups than it saves.
constexpr std::int32_t kParallelMinimum = 32768;

bool KnownVectorEncoding(std::int32_t e) {
  return e == 0 || e == 14 || e == 1 || e == 7 || e == 15;
}

// Converts `count` elements of three components from `encoding` into floats.
void DecodeVectors(const void* data, std::int64_t count, std::int32_t encoding, Vec3f* out) {
  if (encoding == 0 || encoding == 14) {
    std::memcpy(out, data, std::size_t(count) * sizeof(Vec3f));
  } else if (encoding == 1 || encoding == 7) {
    const float* table = HalfToFloatTable();
    const auto* h = static_cast<const std::uint16_t*>(data);
    for (std::int64_t i = 0; i < count; ++i) {
      out[i] = {table[h[3 * i]], table[h[3 * i + 1]], table[h[3 * i + 2]]};
    }
  } else {
    const auto* d = static_cast<const double*>(data);
    for (std::int64_t i = 0; i < count; ++i) {
      out[i] = {float(d[3 * i]), float(d[3 * i + 1]), float(d[3 * i + 2])};
    }
  }
}

// Every polygon edge (corner k to corner k+1, wrapping) as an incidence of both ends, grouped
// by vertex and sorted: a neighbour appears once per polygon edge that joins the two. Edges
// from a corner to the same vertex are skipped. Arrays come from `memory`; false on refusal.
struct Incidences {
  std::int32_t* offsets = nullptr;  // V + 1
  std::int32_t* items = nullptr;    // offsets[V]
};
bool BuildIncidences(QRVMemoryContext& memory, std::int32_t vertexCount, std::int32_t polygonCount,
                     const std::uint8_t* sizes, const std::int32_t* indices, Incidences& out) {
  out.offsets = memory.AllocateArray<std::int32_t>(std::size_t(vertexCount) + 1);
  if (out.offsets == nullptr) return false;
  std::int32_t* offsets = out.offsets;
  std::fill(offsets, offsets + vertexCount + 1, 0);
  const auto forEachEdge = [&](auto&& edge) {
    std::int64_t node = 0;
    for (std::int32_t p = 0; p < polygonCount; ++p) {
      const std::int32_t size = sizes[p];
      for (std::int32_t k = 0; k < size; ++k) {
        const std::int32_t a = indices[node + k];
        const std::int32_t b = indices[node + (k + 1 == size ? 0 : k + 1)];
        if (a != b) edge(a, b);
      }
      node += size;
    }
  };
  std::int64_t total = 0;
  forEachEdge(
      [&](std::int32_t a, std::int32_t b) { ++offsets[a + 1], ++offsets[b + 1], total += 2; });
  if (total > std::numeric_limits<std::int32_t>::max()) return false;
  for (std::int32_t v = 0; v < vertexCount; ++v) offsets[v + 1] += offsets[v];
  out.items = memory.AllocateArray<std::int32_t>(std::size_t(total));
  if (out.items == nullptr) return false;
  // Fill from the back of each range using the end offsets, then shift the offsets back.
  std::int32_t* items = out.items;
  forEachEdge([&](std::int32_t a, std::int32_t b) {
    items[offsets[a]++] = b;
    items[offsets[b]++] = a;
  });
  for (std::int32_t v = vertexCount; v > 0; --v) offsets[v] = offsets[v - 1];
  offsets[0] = 0;
#pragma omp parallel for if (vertexCount > kParallelMinimum) schedule(dynamic, 4096)
  for (std::int32_t v = 0; v < vertexCount; ++v)
    std::sort(items + offsets[v], items + offsets[v + 1]);
  return true;
}

void ReleaseIncidences(QRVMemoryContext& memory, Incidences& inc) {
  memory.Release(inc.offsets);
  memory.Release(inc.items);
  inc = {};
}

// Fan-triangulated area of one polygon, in double.
double PolygonArea(const Vec3f* positions, const std::int32_t* corners, std::int32_t size) {
  if (size < 3) return 0.0;
  const Vec3f& o = positions[corners[0]];
  double sum = 0.0;
  for (std::int32_t k = 1; k + 1 < size; ++k) {
    const Vec3f& a = positions[corners[k]];
    const Vec3f& b = positions[corners[k + 1]];
    const double ax = double(a.x) - o.x, ay = double(a.y) - o.y, az = double(a.z) - o.z;
    const double bx = double(b.x) - o.x, by = double(b.y) - o.y, bz = double(b.z) - o.z;
    const double cx = ay * bz - az * by, cy = az * bx - ax * bz, cz = ax * by - ay * bx;
    sum += std::sqrt(cx * cx + cy * cy + cz * cz);
  }
  return 0.5 * sum;
}

}  // namespace

QRVGeometry::QRVGeometry(QRVMemoryContext* memory)
    : memory_(memory != nullptr ? memory : &ownMemory_) {}

QRVGeometry::~QRVGeometry() { Clear(); }

QRVChannelView QRVGeometry::Channel(int which) const {
  if (which < 0 || which > 2) return {};
  const StoredChannel& c = channels_[which];
  return {c.values, c.valueCount, c.indices, c.perNode};
}

void QRVGeometry::Reset(std::uint32_t mask) {
  if (mask & kDerivedVertexCounts) referencedVertices_ = unreferencedVertices_ = -1;
  if (mask & kDerivedInvalidPolygons) invalidPolygons_ = -1;
  if (mask & kDerivedPolygonSizeCounts) std::fill(sizeCounts_, sizeCounts_ + 4, -1);
  if ((mask & kDerivedOctree) && octree_ != nullptr) {
    octree_->Clear();
    delete octree_;
    octree_ = nullptr;
  }
  if (mask & kDerivedEdges) {
    Free(edges_), Free(edgeStarts_), Free(neighbourEdges_);
    edges_ = edgeStarts_ = neighbourEdges_ = nullptr;
    edgeCount_ = -1;
  }
  if (mask & kDerivedNeighbours) {
    Free(neighbourCounts_), Free(neighbourOffsets_), Free(neighbourLists_);
    neighbourCounts_ = nullptr;
    neighbourOffsets_ = neighbourLists_ = nullptr;
  }
  if (mask & kDerivedComponents) {
    Free(componentNumbers_);
    componentNumbers_ = nullptr;
    componentCount_ = -1;
  }
  if (mask & kDerivedVertexFlags) Free(vertexFlags_), vertexFlags_ = nullptr;
  if (mask & kDerivedPolygonFlags) Free(polygonFlags_), polygonFlags_ = nullptr;
  if (mask & kDerivedPolygonMeasures) Free(polygonMeasures_), polygonMeasures_ = nullptr;
  if (mask & kDerivedNeighbourDistances) Free(neighbourDistances_), neighbourDistances_ = nullptr;
  valid_ &= ~mask;
}

void QRVGeometry::Clear() {
  Reset(kDerivedAll);
  Free(positions_), Free(motion_), Free(polygonSizes_), Free(polygonIndices_);
  positions_ = motion_ = nullptr;
  polygonSizes_ = nullptr;
  polygonIndices_ = nullptr;
  for (StoredChannel& c : channels_) {
    Free(c.values), Free(c.indices);
    c = {};
  }
  vertexCount_ = polygonCount_ = nodeCount_ = 0;
}

QRVStatus QRVGeometry::Set(const void* positions, std::int32_t vertexCount,
                           std::int32_t positionEncoding, const void* description,
                           const std::int32_t* indices, std::int32_t polygonCount,
                           std::int32_t descriptionEncoding, const QRVChannelInput& channel1,
                           const QRVChannelInput& channel2, const QRVChannelInput& channel3,
                           const QRVVertexChannelInput& motion) {
  Clear();
  const auto fail = [this](QRVStatus status) {
    Clear();
    return status;
  };

  if (vertexCount == 0) {
    positions_ = Alloc<Vec3f>(1);
    if (positions_ == nullptr) return fail(kStatusNoMemory);
    positions_[0] = {};
    return CleanUp(true, true, false);
  }

  // Positions.
  if (positions == nullptr || vertexCount < 0) return fail(kStatusIllegalParameter);
  positions_ = Alloc<Vec3f>(std::size_t(vertexCount));
  if (positions_ == nullptr) return fail(kStatusNoMemory);
  if (!KnownVectorEncoding(positionEncoding)) return fail(kStatusUnknownDataType);
  DecodeVectors(positions, vertexCount, positionEncoding, positions_);
  vertexCount_ = vertexCount;

  // Polygon sizes.
  if (polygonCount < 0) polygonCount = 0;
  if (polygonCount > 0) {
    if (description == nullptr) return fail(kStatusIllegalParameter);
    if ((descriptionEncoding == kDescriptionByteSizes ||
         descriptionEncoding == kDescriptionIntSizes) &&
        indices == nullptr) {
      return fail(kStatusIllegalParameter);
    }
  }
  if (descriptionEncoding < kDescriptionByteSizes || descriptionEncoding > kDescriptionTriangles) {
    return fail(kStatusUnknownDataType);
  }
  polygonSizes_ = Alloc<std::uint8_t>(std::size_t(polygonCount));
  if (polygonSizes_ == nullptr) return fail(kStatusNoMemory);
  polygonCount_ = polygonCount;
  const auto* words = static_cast<const std::int32_t*>(description);
  std::int64_t nodeCount = 0;
  switch (descriptionEncoding) {
    case kDescriptionByteSizes:
      // Without polygons the description may be null, which memcpy must not see.
      if (polygonCount > 0) std::memcpy(polygonSizes_, description, std::size_t(polygonCount));
      break;
    case kDescriptionInline:
    case kDescriptionIntSizes: {
      std::int64_t at = 0;
      for (std::int32_t p = 0; p < polygonCount; ++p) {
        const std::int32_t size = words[at];
        if (size < 0 || size > 255) return fail(kStatusCorruptDescription);
        polygonSizes_[p] = std::uint8_t(size);
        at += descriptionEncoding == kDescriptionInline ? 1 + size : 1;
      }
      break;
    }
    default:
      std::memset(polygonSizes_, 3, std::size_t(polygonCount));
      break;
  }
  for (std::int32_t p = 0; p < polygonCount; ++p) nodeCount += polygonSizes_[p];
  if (nodeCount > std::numeric_limits<std::int32_t>::max()) return fail(kStatusNoMemory);

  // Polygon vertex indices.
  polygonIndices_ = Alloc<std::int32_t>(std::size_t(nodeCount));
  if (polygonIndices_ == nullptr) return fail(kStatusNoMemory);
  nodeCount_ = std::int32_t(nodeCount);
  if (descriptionEncoding == kDescriptionInline) {
    std::int64_t at = 0, node = 0;
    for (std::int32_t p = 0; p < polygonCount; ++p) {
      const std::int32_t size = words[at++];
      std::memcpy(polygonIndices_ + node, words + at, std::size_t(size) * sizeof(std::int32_t));
      at += size, node += size;
    }
  } else {
    const std::int32_t* source = descriptionEncoding == kDescriptionTriangles ? words : indices;
    if (nodeCount > 0)
      std::memcpy(polygonIndices_, source, std::size_t(nodeCount) * sizeof(std::int32_t));
  }
  for (std::int64_t n = 0; n < nodeCount; ++n) {
    if (polygonIndices_[n] < 0 || polygonIndices_[n] >= vertexCount)
      return fail(kStatusCorruptDescription);
  }

  // Optional vector channels.
  const QRVChannelInput* inputs[3] = {&channel1, &channel2, &channel3};
  for (int c = 0; c < 3; ++c) {
    const QRVNodeChannelInput& perNode = inputs[c]->perNode;
    const QRVVertexChannelInput& perVertex = inputs[c]->perVertex;
    StoredChannel& stored = channels_[c];
    if (perNode.data != nullptr && perNode.count != 0) {
      if (perNode.count != nodeCount_) return fail(kStatusNodeCountMismatch);
      if (!KnownVectorEncoding(perNode.encoding)) return fail(kStatusUnknownDataType);
      const std::int32_t valueCount =
          perNode.indices != nullptr ? perNode.dataCount : perNode.count;
      if (valueCount < 0) return fail(kStatusIllegalParameter);
      stored.perNode = true;
      stored.values = Alloc<Vec3f>(std::size_t(valueCount));
      if (stored.values == nullptr) return fail(kStatusNoMemory);
      stored.valueCount = valueCount;
      DecodeVectors(perNode.data, valueCount, perNode.encoding, stored.values);
      if (perNode.indices != nullptr) {
        stored.indices = Alloc<std::int32_t>(std::size_t(nodeCount_));
        if (stored.indices == nullptr) return fail(kStatusNoMemory);
        for (std::int32_t n = 0; n < nodeCount_; ++n) {
          if (perNode.indices[n] < 0 || perNode.indices[n] >= valueCount) {
            return fail(kStatusIllegalParameter);
          }
          stored.indices[n] = perNode.indices[n];
        }
      }
    } else if (perVertex.data != nullptr && perVertex.count != 0) {
      if (perVertex.count != vertexCount_) return fail(kStatusCountMismatch);
      if (!KnownVectorEncoding(perVertex.encoding)) return fail(kStatusUnknownDataType);
      stored.values = Alloc<Vec3f>(std::size_t(vertexCount_));
      if (stored.values == nullptr) return fail(kStatusNoMemory);
      stored.valueCount = vertexCount_;
      DecodeVectors(perVertex.data, vertexCount_, perVertex.encoding, stored.values);
    }
  }

  // Motion.
  if (motion.data != nullptr) {
    if (motion.count != vertexCount_) return fail(kStatusCountMismatch);
    if (!KnownVectorEncoding(motion.encoding)) return fail(kStatusUnknownDataType);
    motion_ = Alloc<Vec3f>(std::size_t(vertexCount_));
    if (motion_ == nullptr) return fail(kStatusNoMemory);
    DecodeVectors(motion.data, vertexCount_, motion.encoding, motion_);
  }

  const QRVStatus status = CleanUp(true, true, false);
  if (status != kStatusOk) return fail(status);
  return kStatusOk;
}

// ---------------------------------------------------------------------------------------
// Clean-up

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

// ---------------------------------------------------------------------------------------
// Derived data

bool QRVGeometry::Ensure(std::uint32_t bit) {
  if (!Usable()) return false;
  if (valid_ & bit) return true;
  bool ok = false;
  switch (bit) {
    case kDerivedVertexCounts:
      ok = ComputeVertexCounts();
      break;
    case kDerivedInvalidPolygons:
      ok = ComputeInvalidPolygons();
      break;
    case kDerivedPolygonSizeCounts:
      ok = ComputePolygonSizeCounts();
      break;
    case kDerivedOctree:
      ok = ComputeOctree();
      break;
    case kDerivedEdges:
      ok = ComputeEdges();
      break;
    case kDerivedNeighbours:
      ok = ComputeNeighbours();
      break;
    case kDerivedComponents:
      ok = ComputeComponents();
      break;
    case kDerivedVertexFlags:
      ok = ComputeVertexFlags();
      break;
    case kDerivedPolygonFlags:
      ok = ComputePolygonFlags();
      break;
    case kDerivedPolygonMeasures:
      ok = ComputePolygonMeasures();
      break;
    case kDerivedNeighbourDistances:
      ok = ComputeNeighbourDistances();
      break;
    default:
      break;
  }
  if (ok) {
    valid_ |= bit;
  } else {
    Reset(bit);
  }
  return ok;
}

std::int32_t QRVGeometry::ReferencedVertexCount() {
  return Ensure(kDerivedVertexCounts) ? referencedVertices_ : 0;
}
std::int32_t QRVGeometry::UnreferencedVertexCount() {
  return Ensure(kDerivedVertexCounts) ? unreferencedVertices_ : 0;
}
std::int32_t QRVGeometry::InvalidPolygonCount() {
  return Ensure(kDerivedInvalidPolygons) ? invalidPolygons_ : 0;
}
std::int32_t QRVGeometry::TriangleCount() {
  return Ensure(kDerivedPolygonSizeCounts) ? sizeCounts_[0] : 0;
}
std::int32_t QRVGeometry::QuadCount() {
  return Ensure(kDerivedPolygonSizeCounts) ? sizeCounts_[1] : 0;
}
std::int32_t QRVGeometry::LargePolygonCount() {
  return Ensure(kDerivedPolygonSizeCounts) ? sizeCounts_[2] : 0;
}
std::int32_t QRVGeometry::FanTriangleCount() {
  return Ensure(kDerivedPolygonSizeCounts) ? sizeCounts_[3] : 0;
}
const QRVOctree* QRVGeometry::Octree() { return Ensure(kDerivedOctree) ? octree_ : nullptr; }
std::int32_t QRVGeometry::EdgeCount() { return Ensure(kDerivedEdges) ? edgeCount_ : 0; }
const std::int32_t* QRVGeometry::Edges() { return Ensure(kDerivedEdges) ? edges_ : nullptr; }
const std::int32_t* QRVGeometry::EdgeStarts() {
  return Ensure(kDerivedEdges) ? edgeStarts_ : nullptr;
}
const std::int32_t* QRVGeometry::NeighbourEdges() {
  return Ensure(kDerivedEdges) ? neighbourEdges_ : nullptr;
}
const std::uint8_t* QRVGeometry::NeighbourCounts() {
  return Ensure(kDerivedNeighbours) ? neighbourCounts_ : nullptr;
}
const std::int32_t* QRVGeometry::NeighbourOffsets() {
  return Ensure(kDerivedNeighbours) ? neighbourOffsets_ : nullptr;
}
const std::int32_t* QRVGeometry::NeighbourLists() {
  return Ensure(kDerivedNeighbours) ? neighbourLists_ : nullptr;
}
const std::int32_t* QRVGeometry::ComponentNumbers() {
  return Ensure(kDerivedComponents) ? componentNumbers_ : nullptr;
}
std::int32_t QRVGeometry::ComponentCount() {
  return Ensure(kDerivedComponents) ? componentCount_ : 0;
}
const std::uint32_t* QRVGeometry::VertexFlags() {
  return Ensure(kDerivedVertexFlags) ? vertexFlags_ : nullptr;
}
const std::uint8_t* QRVGeometry::PolygonFlags() {
  return Ensure(kDerivedPolygonFlags) ? polygonFlags_ : nullptr;
}
const float* QRVGeometry::PolygonMeasures() {
  return Ensure(kDerivedPolygonMeasures) ? polygonMeasures_ : nullptr;
}
const float* QRVGeometry::NeighbourDistances() {
  return Ensure(kDerivedNeighbourDistances) ? neighbourDistances_ : nullptr;
}

bool QRVGeometry::ComputeVertexCounts() {
  std::uint8_t* seen = Alloc<std::uint8_t>(std::size_t(vertexCount_));
  if (seen == nullptr) return false;
  std::memset(seen, 0, std::size_t(vertexCount_));
  for (std::int32_t n = 0; n < nodeCount_; ++n) {
    const std::int32_t v = polygonIndices_[n];
    if (v >= 0 && v < vertexCount_) seen[v] = 1;
  }
  std::int32_t referenced = 0;
  for (std::int32_t v = 0; v < vertexCount_; ++v) referenced += seen[v];
  Free(seen);
  referencedVertices_ = referenced;
  unreferencedVertices_ = vertexCount_ - referenced;
  return true;
}

bool QRVGeometry::PolygonIsInvalid(std::int64_t firstNode, std::int32_t size) const {
  if (size < 3) return true;
  const std::int32_t* corners = polygonIndices_ + firstNode;
  for (std::int32_t i = 0; i < size; ++i) {
    if (corners[i] < 0 || corners[i] >= vertexCount_) return true;
    for (std::int32_t j = 0; j < i; ++j) {
      if (corners[j] == corners[i]) return true;
    }
  }
  return false;
}

bool QRVGeometry::ComputeInvalidPolygons() {
  std::int32_t invalid = 0;
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < polygonCount_; ++p) {
    invalid += PolygonIsInvalid(node, polygonSizes_[p]);
    node += polygonSizes_[p];
  }
  invalidPolygons_ = invalid;
  return true;
}

bool QRVGeometry::ComputePolygonSizeCounts() {
  std::int64_t counts[4] = {};
  for (std::int32_t p = 0; p < polygonCount_; ++p) {
    const std::int32_t size = polygonSizes_[p];
    counts[size == 3 ? 0 : size == 4 ? 1 : 2] += size >= 3;
    if (size >= 3) counts[3] += size - 2;
  }
  for (int i = 0; i < 4; ++i) {
    if (counts[i] > std::numeric_limits<std::int32_t>::max()) return false;
    sizeCounts_[i] = std::int32_t(counts[i]);
  }
  return true;
}

bool QRVGeometry::ComputeOctree() {
  octree_ = new (std::nothrow) QRVOctree(*memory_);
  if (octree_ == nullptr) return false;
  return octree_->Build(positions_, vertexCount_) == kStatusOk;
}

bool QRVGeometry::ComputeNeighbours() {
  Incidences inc;
  if (!BuildIncidences(*memory_, vertexCount_, polygonCount_, polygonSizes_, polygonIndices_,
                       inc)) {
    ReleaseIncidences(*memory_, inc);
    return false;
  }
  // Drop repeats within each sorted range, moving the survivors forward in place; the
  // incidence offsets become the neighbour offsets.
  std::int32_t* offsets = inc.offsets;
  std::int32_t* items = inc.items;
  std::int32_t write = 0;
  for (std::int32_t v = 0; v < vertexCount_; ++v) {
    const std::int32_t begin = offsets[v], end = offsets[v + 1];
    offsets[v] = write;
    for (std::int32_t i = begin; i < end; ++i) {
      if (i == begin || items[i] != items[i - 1]) items[write++] = items[i];
    }
  }
  offsets[vertexCount_] = write;
  neighbourLists_ = Alloc<std::int32_t>(std::size_t(write));
  neighbourCounts_ = Alloc<std::uint8_t>(std::size_t(vertexCount_));
  if (neighbourLists_ == nullptr || neighbourCounts_ == nullptr) {
    ReleaseIncidences(*memory_, inc);
    return false;
  }
  std::memcpy(neighbourLists_, items, std::size_t(write) * sizeof(std::int32_t));
  Free(items);
  neighbourOffsets_ = offsets;
  for (std::int32_t v = 0; v < vertexCount_; ++v) {
    neighbourCounts_[v] = std::uint8_t(std::min(offsets[v + 1] - offsets[v], 255));
  }
  return true;
}

bool QRVGeometry::ComputeComponents() {
  if (!Ensure(kDerivedNeighbours)) return false;
  componentNumbers_ = Alloc<std::int32_t>(std::size_t(vertexCount_));
  std::int32_t* stack = Alloc<std::int32_t>(std::size_t(vertexCount_));
  if (componentNumbers_ == nullptr || stack == nullptr) {
    Free(stack);
    return false;
  }
  // A component's number depends only on its lowest vertex (the seed), so an explicit-stack
  // fill numbers exactly as a recursive depth-first fill would, without its stack depth.
  std::fill(componentNumbers_, componentNumbers_ + vertexCount_, -1);
  std::int32_t component = 0;
  for (std::int32_t seed = 0; seed < vertexCount_; ++seed) {
    if (componentNumbers_[seed] != -1) continue;
    std::int32_t top = 0;
    stack[top++] = seed;
    componentNumbers_[seed] = component;
    while (top > 0) {
      const std::int32_t v = stack[--top];
      for (std::int32_t i = neighbourOffsets_[v]; i < neighbourOffsets_[v + 1]; ++i) {
        const std::int32_t w = neighbourLists_[i];
        if (componentNumbers_[w] == -1) {
          componentNumbers_[w] = component;
          stack[top++] = w;
        }
      }
    }
    ++component;
  }
  Free(stack);
  componentCount_ = component;
  return true;
}

bool QRVGeometry::ComputeEdges() {
  if (!Ensure(kDerivedNeighbours)) return false;
  const std::int32_t slots = neighbourOffsets_[vertexCount_];
  edgeStarts_ = Alloc<std::int32_t>(std::size_t(vertexCount_) + 1);
  edges_ = Alloc<std::int32_t>(std::size_t(slots));  // two ints per edge, one edge per two slots
  neighbourEdges_ = Alloc<std::int32_t>(std::size_t(slots));
  if (edgeStarts_ == nullptr || edges_ == nullptr || neighbourEdges_ == nullptr) return false;
  // Lists are ascending, so a vertex's higher neighbours form the tail of its list.
  const auto firstHigher = [&](std::int32_t v) {
    return std::int32_t(std::upper_bound(neighbourLists_ + neighbourOffsets_[v],
                                         neighbourLists_ + neighbourOffsets_[v + 1], v) -
                        neighbourLists_);
  };
  std::int32_t edge = 0;
  for (std::int32_t v = 0; v < vertexCount_; ++v) {
    edgeStarts_[v] = edge;
    for (std::int32_t i = firstHigher(v); i < neighbourOffsets_[v + 1]; ++i) {
      edges_[2 * edge] = v;
      edges_[2 * edge + 1] = neighbourLists_[i];
      ++edge;
    }
  }
  edgeStarts_[vertexCount_] = edge;
  edgeCount_ = edge;
#pragma omp parallel for if (vertexCount_ > kParallelMinimum) schedule(dynamic, 4096)
  for (std::int32_t v = 0; v < vertexCount_; ++v) {
    const std::int32_t higher = firstHigher(v);
    for (std::int32_t i = neighbourOffsets_[v]; i < neighbourOffsets_[v + 1]; ++i) {
      const std::int32_t w = neighbourLists_[i];
      if (i >= higher) {
        neighbourEdges_[i] = edgeStarts_[v] + (i - higher);
      } else {
        const std::int32_t* at = std::lower_bound(neighbourLists_ + neighbourOffsets_[w],
                                                  neighbourLists_ + neighbourOffsets_[w + 1], v);
        neighbourEdges_[i] = edgeStarts_[w] + std::int32_t(at - neighbourLists_) - firstHigher(w);
      }
    }
  }
  return true;
}

bool QRVGeometry::ComputeVertexFlags() {
  Incidences inc;
  vertexFlags_ = Alloc<std::uint32_t>(std::size_t(vertexCount_));
  if (vertexFlags_ == nullptr || !BuildIncidences(*memory_, vertexCount_, polygonCount_,
                                                  polygonSizes_, polygonIndices_, inc)) {
    ReleaseIncidences(*memory_, inc);
    return false;
  }
  std::memset(vertexFlags_, 0, std::size_t(vertexCount_) * sizeof(std::uint32_t));
  for (std::int32_t n = 0; n < nodeCount_; ++n)
    vertexFlags_[polygonIndices_[n]] |= kVertexFlagReferenced;
  // In a sorted incidence range a neighbour repeats once per polygon using that edge.
  for (std::int32_t v = 0; v < vertexCount_; ++v) {
    std::uint32_t flags = 0;
    std::int32_t distinct = 0;
    for (std::int32_t i = inc.offsets[v]; i < inc.offsets[v + 1];) {
      std::int32_t j = i;
      while (j < inc.offsets[v + 1] && inc.items[j] == inc.items[i]) ++j;
      if (j - i == 1) flags |= kVertexFlagBorder;
      if (j - i > 2) flags |= kVertexFlagNonManifold;
      ++distinct;
      i = j;
    }
    if (distinct > 255) flags |= kVertexFlagPole;
    vertexFlags_[v] |= flags;
  }
  ReleaseIncidences(*memory_, inc);
  return true;
}

bool QRVGeometry::ComputePolygonFlags() {
  const std::int32_t invalid = InvalidPolygonCount();
  const std::uint32_t* vertexFlags = VertexFlags();
  if (vertexFlags == nullptr) return false;
  polygonFlags_ = Alloc<std::uint8_t>(std::size_t(polygonCount_));
  if (polygonFlags_ == nullptr) return false;
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < polygonCount_; ++p) {
    const std::int32_t size = polygonSizes_[p];
    std::uint8_t flags = 0;
    if (invalid > 0 && PolygonIsInvalid(node, size)) flags |= kPolygonFlagInvalid;
    bool allBorder = size > 0;
    for (std::int32_t k = 0; k < size && allBorder; ++k) {
      const std::int32_t v = polygonIndices_[node + k];
      allBorder = v >= 0 && v < vertexCount_ && (vertexFlags[v] & kVertexFlagBorder) != 0;
    }
    if (allBorder) flags |= kPolygonFlagAllBorder;
    polygonFlags_[p] = flags;
    node += size;
  }
  return true;
}

bool QRVGeometry::ComputePolygonMeasures() {
  polygonMeasures_ = Alloc<float>(std::size_t(polygonCount_));
  if (polygonMeasures_ == nullptr) return false;
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < polygonCount_; ++p) {
    polygonMeasures_[p] = float(PolygonArea(positions_, polygonIndices_ + node, polygonSizes_[p]));
    node += polygonSizes_[p];
  }
  return true;
}

bool QRVGeometry::ComputeNeighbourDistances() {
  if (!Ensure(kDerivedNeighbours)) return false;
  neighbourDistances_ = Alloc<float>(std::size_t(neighbourOffsets_[vertexCount_]));
  if (neighbourDistances_ == nullptr) return false;
    // (a - b) and (b - a) round to exact negatives, so the length is the same from either end.
#pragma omp parallel for if (vertexCount_ > kParallelMinimum) schedule(dynamic, 4096)
  for (std::int32_t v = 0; v < vertexCount_; ++v) {
    const Vec3f& p = positions_[v];
    for (std::int32_t i = neighbourOffsets_[v]; i < neighbourOffsets_[v + 1]; ++i) {
      const Vec3f& q = positions_[neighbourLists_[i]];
      const float dx = p.x - q.x, dy = p.y - q.y, dz = p.z - q.z;
      neighbourDistances_[i] = std::sqrt(dy * dy + dx * dx + dz * dz);
    }
  }
  return true;
}

}  // namespace quillix
