// QRVGeometry::Set: decoding the caller's arrays into the container's own, step by step.
#include <cstring>
#include <limits>

#include "core/math/half_float.h"
#include "kernel/geometry.h"
#include "kernel/status_codes.h"

namespace quillix {
namespace {

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

// Copies `count` polygon vertex indices and tells whether all lie in 0..vertexCount-1: one
// pass over the largest input array instead of a copy and a check. At -O2 the compiler leaves
// the loop scalar (it cannot rule out overlap cheaply): simd asks for vectors.
bool CopyIndices(const std::int32_t* from, std::int64_t count, std::int32_t vertexCount,
                 std::int32_t* to) {
  std::uint32_t outside = 0;
#pragma omp simd reduction(| : outside)
  for (std::int64_t n = 0; n < count; ++n) {
    to[n] = from[n];
    outside |= std::uint32_t(from[n] >= vertexCount) | std::uint32_t(from[n] < 0);
  }
  return outside == 0;
}

}  // namespace

QRVStatus QRVGeometry::Set(const void* positions, std::int32_t vertexCount,
                           std::int32_t positionEncoding, const void* description,
                           const std::int32_t* indices, std::int32_t polygonCount,
                           std::int32_t descriptionEncoding, const QRVChannelInput& channel1,
                           const QRVChannelInput& channel2, const QRVChannelInput& channel3,
                           const QRVVertexChannelInput& motion) {
  Clear();
  if (vertexCount == 0) {
    positions_ = Alloc<Vec3f>(1);
    if (positions_ == nullptr) return kStatusNoMemory;
    positions_[0] = {};
    return CleanUp(true, true, false);
  }
  QRVStatus status = StorePositions(positions, vertexCount, positionEncoding);
  if (status == kStatusOk)
    status = StorePolygonSizes(description, indices, polygonCount, descriptionEncoding);
  if (status == kStatusOk) status = StorePolygonIndices(description, indices, descriptionEncoding);
  const QRVChannelInput* channels[3] = {&channel1, &channel2, &channel3};
  for (int c = 0; c < 3 && status == kStatusOk; ++c) status = StoreChannel(*channels[c], c);
  if (status == kStatusOk) status = StoreMotion(motion);
  if (status == kStatusOk) status = CleanUp(true, true, false);
  if (status != kStatusOk) Clear();
  return status;
}

QRVStatus QRVGeometry::StorePositions(const void* positions, std::int32_t vertexCount,
                                      std::int32_t encoding) {
  if (positions == nullptr || vertexCount < 0) return kStatusIllegalParameter;
  positions_ = Alloc<Vec3f>(std::size_t(vertexCount));
  if (positions_ == nullptr) return kStatusNoMemory;
  if (!KnownVectorEncoding(encoding)) return kStatusUnknownDataType;
  DecodeVectors(positions, vertexCount, encoding, positions_);
  vertexCount_ = vertexCount;
  return kStatusOk;
}

QRVStatus QRVGeometry::StorePolygonSizes(const void* description, const std::int32_t* indices,
                                         std::int32_t polygonCount,
                                         std::int32_t descriptionEncoding) {
  if (polygonCount < 0) polygonCount = 0;
  if (polygonCount > 0) {
    if (description == nullptr) return kStatusIllegalParameter;
    if ((descriptionEncoding == kDescriptionByteSizes ||
         descriptionEncoding == kDescriptionIntSizes) &&
        indices == nullptr) {
      return kStatusIllegalParameter;
    }
  }
  if (descriptionEncoding < kDescriptionByteSizes || descriptionEncoding > kDescriptionTriangles) {
    return kStatusUnknownDataType;
  }
  polygonSizes_ = Alloc<std::uint8_t>(std::size_t(polygonCount));
  if (polygonSizes_ == nullptr) return kStatusNoMemory;
  polygonCount_ = polygonCount;
  const auto* words = static_cast<const std::int32_t*>(description);
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
        if (size < 0 || size > 255) return kStatusCorruptDescription;
        polygonSizes_[p] = std::uint8_t(size);
        at += descriptionEncoding == kDescriptionInline ? 1 + size : 1;
      }
      break;
    }
    default:
      std::memset(polygonSizes_, 3, std::size_t(polygonCount));
      break;
  }
  return kStatusOk;
}

QRVStatus QRVGeometry::StorePolygonIndices(const void* description, const std::int32_t* indices,
                                           std::int32_t descriptionEncoding) {
  std::int64_t nodeCount = 0;
#pragma omp simd reduction(+ : nodeCount)
  for (std::int32_t p = 0; p < polygonCount_; ++p) nodeCount += polygonSizes_[p];
  if (nodeCount > std::numeric_limits<std::int32_t>::max()) return kStatusNoMemory;
  polygonIndices_ = Alloc<std::int32_t>(std::size_t(nodeCount));
  if (polygonIndices_ == nullptr) return kStatusNoMemory;
  nodeCount_ = std::int32_t(nodeCount);
  const auto* words = static_cast<const std::int32_t*>(description);
  bool inRange = true;
  if (descriptionEncoding == kDescriptionInline) {
    std::int64_t at = 0, node = 0;
    for (std::int32_t p = 0; p < polygonCount_; ++p) {
      const std::int32_t size = words[at++];
      inRange &= CopyIndices(words + at, size, vertexCount_, polygonIndices_ + node);
      at += size, node += size;
    }
  } else {
    const std::int32_t* source = descriptionEncoding == kDescriptionTriangles ? words : indices;
    inRange = CopyIndices(source, nodeCount, vertexCount_, polygonIndices_);
  }
  return inRange ? kStatusOk : kStatusCorruptDescription;
}

QRVStatus QRVGeometry::StoreChannel(const QRVChannelInput& input, int which) {
  const QRVNodeChannelInput& perNode = input.perNode;
  const QRVVertexChannelInput& perVertex = input.perVertex;
  StoredChannel& stored = channels_[which];
  if (perNode.data != nullptr && perNode.count != 0) {
    if (perNode.count != nodeCount_) return kStatusNodeCountMismatch;
    if (!KnownVectorEncoding(perNode.encoding)) return kStatusUnknownDataType;
    const std::int32_t valueCount = perNode.indices != nullptr ? perNode.dataCount : perNode.count;
    if (valueCount < 0) return kStatusIllegalParameter;
    stored.perNode = true;
    stored.values = Alloc<Vec3f>(std::size_t(valueCount));
    if (stored.values == nullptr) return kStatusNoMemory;
    stored.valueCount = valueCount;
    DecodeVectors(perNode.data, valueCount, perNode.encoding, stored.values);
    if (perNode.indices != nullptr) {
      stored.indices = Alloc<std::int32_t>(std::size_t(nodeCount_));
      if (stored.indices == nullptr) return kStatusNoMemory;
      for (std::int32_t n = 0; n < nodeCount_; ++n) {
        if (perNode.indices[n] < 0 || perNode.indices[n] >= valueCount) {
          return kStatusIllegalParameter;
        }
        stored.indices[n] = perNode.indices[n];
      }
    }
  } else if (perVertex.data != nullptr && perVertex.count != 0) {
    if (perVertex.count != vertexCount_) return kStatusCountMismatch;
    if (!KnownVectorEncoding(perVertex.encoding)) return kStatusUnknownDataType;
    stored.values = Alloc<Vec3f>(std::size_t(vertexCount_));
    if (stored.values == nullptr) return kStatusNoMemory;
    stored.valueCount = vertexCount_;
    DecodeVectors(perVertex.data, vertexCount_, perVertex.encoding, stored.values);
  }
  return kStatusOk;
}

QRVStatus QRVGeometry::StoreMotion(const QRVVertexChannelInput& motion) {
  if (motion.data == nullptr) return kStatusOk;
  if (motion.count != vertexCount_) return kStatusCountMismatch;
  if (!KnownVectorEncoding(motion.encoding)) return kStatusUnknownDataType;
  motion_ = Alloc<Vec3f>(std::size_t(vertexCount_));
  if (motion_ == nullptr) return kStatusNoMemory;
  DecodeVectors(motion.data, vertexCount_, motion.encoding, motion_);
  return kStatusOk;
}

}  // namespace quillix
