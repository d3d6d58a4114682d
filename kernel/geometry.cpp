// QRVGeometry's lifetime, release by mask and the cached derived items, each computed by the
// free function of its own kernel/mesh_*.h file.
#include "kernel/geometry.h"

#include <cstring>
#include <new>

#include "kernel/mesh_components.h"
#include "kernel/mesh_measures.h"
#include "kernel/octree.h"

namespace quillix {

QRVGeometry::QRVGeometry(QRVMemoryContext* memory)
    : memory_(memory != nullptr ? memory : &ownMemory_) {}

QRVGeometry::~QRVGeometry() { Clear(); }

QRVChannelView QRVGeometry::Channel(int which) const {
  if (which < 0 || which > 2) return {};
  const StoredChannel& c = channels_[which];
  return {c.values, c.valueCount, c.indices, c.perNode};
}

void QRVGeometry::Reset(std::uint32_t mask) {
  if (mask & kDerivedVertexCounts) vertexReferences_ = {};
  if (mask & kDerivedInvalidPolygons) invalidPolygons_ = -1;
  if (mask & kDerivedPolygonSizeCounts) sizeCounts_ = {};
  if ((mask & kDerivedOctree) && octree_ != nullptr) {
    octree_->Clear();
    delete octree_;
    octree_ = nullptr;
  }
  if (mask & kDerivedEdges) ReleaseEdges(*memory_, edges_);
  if (mask & kDerivedNeighbours) ReleaseNeighbours(*memory_, neighbours_);
  if (mask & kDerivedComponents) Free(componentNumbers_), componentNumbers_ = nullptr;
  if (mask & kDerivedVertexFlags) Free(vertexFlags_), vertexFlags_ = nullptr;
  if (mask & kDerivedPolygonFlags) Free(polygonFlags_), polygonFlags_ = nullptr;
  if (mask & kDerivedPolygonMeasures) Free(polygonMeasures_), polygonMeasures_ = nullptr;
  if (mask & kDerivedNeighbourSteps) Free(neighbourSteps_), neighbourSteps_ = nullptr;
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

bool QRVGeometry::Ensure(std::uint32_t bit) {
  if (!Usable()) return false;
  if (valid_ & bit) return true;
  const bool ok = Compute(bit);
  if (ok) {
    valid_ |= bit;
  } else {
    Reset(bit);
  }
  return ok;
}

bool QRVGeometry::Compute(std::uint32_t bit) {
  const MeshView mesh = Mesh();
  switch (bit) {
    case kDerivedVertexCounts:
    case kDerivedInvalidPolygons: {
      // One pass answers both (the clean-up asks for both, one after the other); only the
      // reference counts need the scratch bytes.
      std::uint8_t* seen = Alloc<std::uint8_t>(std::size_t(vertexCount_));
      if (seen == nullptr && bit == kDerivedVertexCounts) return false;
      if (seen != nullptr) std::memset(seen, 0, std::size_t(vertexCount_));
      invalidPolygons_ = CheckPolygons(mesh, seen, vertexReferences_);
      valid_ |= kDerivedInvalidPolygons | (seen != nullptr ? kDerivedVertexCounts : 0u);
      Free(seen);
      return true;
    }
    case kDerivedPolygonSizeCounts:
      return CountPolygonSizes(mesh, sizeCounts_);
    case kDerivedOctree:
      octree_ = new (std::nothrow) QRVOctree(*memory_);
      return octree_ != nullptr && octree_->Build(positions_, vertexCount_) == kStatusOk;
    case kDerivedEdges:
      return Ensure(kDerivedNeighbours) && BuildEdges(mesh, neighbours_, *memory_, edges_);
    case kDerivedNeighbours:
      return BuildNeighbours(mesh, *memory_, neighbours_);
    case kDerivedComponents:
      if (!Ensure(kDerivedNeighbours)) return false;
      componentNumbers_ = NumberComponents(mesh, neighbours_, *memory_);
      return componentNumbers_ != nullptr;
    case kDerivedVertexFlags:
      vertexFlags_ = ComputeVertexFlags(mesh, *memory_);
      return vertexFlags_ != nullptr;
    case kDerivedPolygonFlags: {
      const bool anyInvalid = InvalidPolygonCount() > 0;
      const std::uint32_t* vertexFlags = VertexFlags();
      if (vertexFlags == nullptr) return false;
      polygonFlags_ = ComputePolygonFlags(mesh, vertexFlags, anyInvalid, *memory_);
      return polygonFlags_ != nullptr;
    }
    case kDerivedPolygonMeasures:
      polygonMeasures_ = ComputePolygonAreas(mesh, *memory_);
      return polygonMeasures_ != nullptr;
    case kDerivedNeighbourSteps:
      if (!Ensure(kDerivedNeighbours)) return false;
      neighbourSteps_ = ComputeNeighbourSteps(mesh, neighbours_, *memory_);
      return neighbourSteps_ != nullptr;
    default:
      return false;
  }
}

std::int32_t QRVGeometry::ReferencedVertexCount() {
  return Ensure(kDerivedVertexCounts) ? vertexReferences_.referenced : 0;
}
std::int32_t QRVGeometry::UnreferencedVertexCount() {
  return Ensure(kDerivedVertexCounts) ? vertexReferences_.unreferenced : 0;
}
std::int32_t QRVGeometry::InvalidPolygonCount() {
  return Ensure(kDerivedInvalidPolygons) ? invalidPolygons_ : 0;
}
std::int32_t QRVGeometry::QuadCount() {
  return Ensure(kDerivedPolygonSizeCounts) ? sizeCounts_.quads : 0;
}
std::int32_t QRVGeometry::FanTriangleCount() {
  return Ensure(kDerivedPolygonSizeCounts) ? sizeCounts_.fanTriangles : 0;
}
const QRVOctree* QRVGeometry::Octree() { return Ensure(kDerivedOctree) ? octree_ : nullptr; }
std::int32_t QRVGeometry::EdgeCount() { return Ensure(kDerivedEdges) ? edges_.count : 0; }
const std::int32_t* QRVGeometry::Edges() { return Ensure(kDerivedEdges) ? edges_.pairs : nullptr; }
const std::int32_t* QRVGeometry::EdgeStarts() {
  return Ensure(kDerivedEdges) ? edges_.starts : nullptr;
}
const std::int32_t* QRVGeometry::NeighbourEdges() {
  return Ensure(kDerivedEdges) ? edges_.slotEdges : nullptr;
}
const std::uint8_t* QRVGeometry::NeighbourCounts() {
  return Ensure(kDerivedNeighbours) ? neighbours_.counts : nullptr;
}
const std::int32_t* QRVGeometry::NeighbourOffsets() {
  return Ensure(kDerivedNeighbours) ? neighbours_.offsets : nullptr;
}
const std::int32_t* QRVGeometry::NeighbourLists() {
  return Ensure(kDerivedNeighbours) ? neighbours_.lists : nullptr;
}
const std::int32_t* QRVGeometry::ComponentNumbers() {
  return Ensure(kDerivedComponents) ? componentNumbers_ : nullptr;
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
const NeighbourStep* QRVGeometry::NeighbourSteps() {
  return Ensure(kDerivedNeighbourSteps) ? neighbourSteps_ : nullptr;
}

}  // namespace quillix
