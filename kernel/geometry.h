// The kernel's polygon-mesh container.
#pragma once

#include <cstdint>
#include <vector>

#include "core/math/math_types.h"
#include "kernel/memory_context.h"
#include "kernel/mesh_counts.h"
#include "kernel/mesh_edges.h"
#include "kernel/mesh_flags.h"
#include "kernel/mesh_neighbours.h"
#include "kernel/mesh_view.h"
#include "kernel/status.h"

namespace quillix {

class QRVOctree;

// Bits naming the derived items of a QRVGeometry; Reset(mask) releases the items of the
// given bits, and each accessor recomputes its item on the next request.
enum QRVDerived : std::uint32_t {
  kDerivedVertexCounts = 1,           // referenced / unreferenced vertex counts
  kDerivedInvalidPolygons = 2,        // count of invalid polygons
  kDerivedPolygonSizeCounts = 4,      // triangles, quads, larger polygons, fan triangles
  kDerivedOctree = 8,                 // octree over the vertices
  kDerivedEdges = 16,                 // edge pairs, per-vertex edge starts, per-slot edge ids
  kDerivedNeighbours = 256,           // neighbour counts, offsets and lists
  kDerivedComponents = 8192,          // connected-component number per vertex
  kDerivedVertexFlags = 65536,        // one flag word per vertex (kVertexFlag*)
  kDerivedPolygonFlags = 524288,      // one flag byte per polygon (kPolygonFlag*)
  kDerivedPolygonMeasures = 1048576,  // polygon area
  kDerivedNeighbourSteps = 2097152,   // every neighbour slot with the length of its edge
  kDerivedAll = 0xFFFFFFFFu,
};

// Encodings of positions, motion and vector channels.
inline constexpr std::int32_t kEncodingFloat = 0;  // 14 is accepted as well
inline constexpr std::int32_t kEncodingHalf = 1;   // 7 is accepted as well
inline constexpr std::int32_t kEncodingDouble = 15;
// Encodings of the polygonal description.
inline constexpr std::int32_t kDescriptionByteSizes = 16;  // uint8 size per polygon + index array
inline constexpr std::int32_t kDescriptionInline = 17;     // int32 size, then its indices, ...
inline constexpr std::int32_t kDescriptionIntSizes = 18;   // int32 size per polygon + index array
inline constexpr std::int32_t kDescriptionTriangles = 19;  // int32 indices, three per polygon

// An optional vector channel given per polygon node. Without `indices`, node k takes data
// element k and `data` holds `count` elements. With `indices` (`count` entries), node k takes
// data element indices[k] and `data` holds `dataCount` elements, so shared values are stored
// once; every index must lie in [0, dataCount).
struct QRVNodeChannelInput {
  const void* data = nullptr;
  const std::int32_t* indices = nullptr;
  std::int32_t count = 0;
  std::int32_t dataCount = 0;
  std::int32_t encoding = kEncodingFloat;
};
// An optional vector channel (or the motion channel) given per vertex: `count` elements.
struct QRVVertexChannelInput {
  const void* data = nullptr;
  std::int32_t count = 0;
  std::int32_t encoding = kEncodingFloat;
};
// One optional channel: the per-node form wins when it has data and a non-zero count.
struct QRVChannelInput {
  QRVNodeChannelInput perNode;
  QRVVertexChannelInput perVertex;
};

// A stored channel. `values` is null when the channel is absent. Per node with indices:
// node k reads values[indices[k]]; per node without: values[k]; per vertex: values[vertex].
struct QRVChannelView {
  const Vec3f* values = nullptr;
  std::int32_t valueCount = 0;
  const std::int32_t* indices = nullptr;
  bool perNode = false;
};

// Polygon mesh: positions, polygon sizes (one byte each) and the concatenated polygon vertex
// indices, plus three optional vector channels and a motion channel. Every array is allocated
// exactly to size through the memory context. Derived data is computed on first request by
// the free functions of kernel/mesh_*.h and cached until Reset releases it.
//
// Failures are status codes; a failed Set leaves the container empty. Computing accessors
// (non-const) are for one thread; once the items a reader needs are computed, the const
// accessors may be called from any number of threads at once.
class QRVGeometry {
 public:
  // `memory` accounts every allocation; null gives the geometry a context of its own.
  explicit QRVGeometry(QRVMemoryContext* memory = nullptr);
  ~QRVGeometry();
  QRVGeometry(const QRVGeometry&) = delete;
  QRVGeometry& operator=(const QRVGeometry&) = delete;

  // Fills the container; it is emptied first. Arguments:
  //  - positions: vertexCount × 3 values in `positionEncoding` (0/14 float, bit for bit;
  //    1/7 half, through the 65536-entry table; 15 double, narrowed). vertexCount 0 keeps
  //    one dummy position (count stays 0) and ignores the polygons.
  //  - description / indices / polygonCount / descriptionEncoding (16 to 19, see the
  //    constants above); a negative polygonCount means none.
  //  - channel1..3 and motion: optional, see QRVChannelInput.
  // Status: 6 null or negative inputs, 13 unknown encoding, 92 polygon size outside 0..255
  // or index outside 0..vertexCount-1, 80 per-node count differs from the node count, 79
  // per-vertex or motion count differs from the vertex count, 9 no memory or over the limit.
  // Then invalid polygons and unreferenced vertices are removed (CleanUp(true, true, false)).
  QRVStatus Set(const void* positions, std::int32_t vertexCount, std::int32_t positionEncoding,
                const void* description, const std::int32_t* indices, std::int32_t polygonCount,
                std::int32_t descriptionEncoding, const QRVChannelInput& channel1 = {},
                const QRVChannelInput& channel2 = {}, const QRVChannelInput& channel3 = {},
                const QRVVertexChannelInput& motion = {});

  // Releases the derived items of `mask` (QRVDerived bits).
  void Reset(std::uint32_t mask);
  // Releases everything: derived items and primary arrays.
  void Clear();

  // Removes invalid polygons, degenerate polygons (area NaN or below 1e-23 in magnitude)
  // and unreferenced vertices, as switched. Survivors keep their order. 78 when the measures
  // or flags cannot be computed (the container is emptied), 9 on memory refusal.
  QRVStatus CleanUp(bool removeUnreferencedVertices, bool removeInvalidPolygons,
                    bool removeDegeneratePolygons);
  // Removes the listed polygons (duplicates allowed, out-of-range entries give 6); the
  // surviving polygons and their per-node channel values keep their order.
  QRVStatus RemovePolygons(const std::int32_t* polygons, std::int32_t count);
  // Removes the vertices that no polygon names, renumbering the rest in their order.
  QRVStatus RemoveUnreferencedVertices();

  // Primary data. Positions is null for an empty container and holds one dummy vertex
  // after Set with zero vertices.
  std::int32_t VertexCount() const { return vertexCount_; }
  std::int32_t PolygonCount() const { return polygonCount_; }
  std::int32_t NodeCount() const { return nodeCount_; }
  const Vec3f* Positions() const { return positions_; }
  const std::uint8_t* PolygonSizes() const { return polygonSizes_; }
  const std::int32_t* PolygonVertexIndices() const { return polygonIndices_; }
  QRVChannelView Channel(int which) const;  // which: 0, 1 or 2
  const Vec3f* Motion() const { return motion_; }
  QRVMemoryContext& Memory() const { return *memory_; }
  // The primary arrays as the derived-data functions read them.
  MeshView Mesh() const {
    return {vertexCount_, polygonCount_, nodeCount_, positions_, polygonSizes_, polygonIndices_};
  }

  // Derived data. Each non-const accessor returns null (or 0) without positions or
  // vertices, computes its item when absent, and returns null (or 0) when that fails.
  std::int32_t ReferencedVertexCount();
  std::int32_t UnreferencedVertexCount();
  std::int32_t InvalidPolygonCount();
  std::int32_t QuadCount();         // polygons of size 4
  std::int32_t FanTriangleCount();  // sum over polygons of size - 2
  const QRVOctree* Octree();
  std::int32_t EdgeCount();
  const std::int32_t* Edges();           // EdgeCount() pairs (a, b) with a < b, by a then b
  const std::int32_t* EdgeStarts();      // V + 1: first edge whose lower vertex is v
  const std::int32_t* NeighbourEdges();  // per neighbour slot: the edge id of (v, neighbour)
  // Neighbour lists: one compact block, vertex v's neighbours (ascending vertex index) at
  // NeighbourLists()[NeighbourOffsets()[v] .. NeighbourOffsets()[v + 1]). The byte counts
  // saturate at 255; the offsets are exact for any number of neighbours.
  const std::uint8_t* NeighbourCounts();
  const std::int32_t* NeighbourOffsets();
  const std::int32_t* NeighbourLists();
  const std::int32_t* ComponentNumbers();  // components numbered 0.. in order of lowest vertex
  const std::uint32_t* VertexFlags();
  const std::uint8_t* PolygonFlags();
  const float* PolygonMeasures();  // area (fan triangulation), computed in double
  // Per neighbour slot (parallel to NeighbourLists): the neighbour and the distance between the
  // two vertices, in single precision as sqrt(dy * dy + dx * dx + dz * dz), the path search's
  // step length, side by side.
  const NeighbourStep* NeighbourSteps();

  // Read-only views of already computed items (null when absent): safe for concurrent readers.
  const std::uint8_t* NeighbourCounts() const { return neighbours_.counts; }
  const std::int32_t* NeighbourOffsets() const { return neighbours_.offsets; }
  const std::int32_t* NeighbourLists() const { return neighbours_.lists; }
  const std::int32_t* ComponentNumbers() const { return componentNumbers_; }
  const QRVOctree* Octree() const { return octree_; }
  const NeighbourStep* NeighbourSteps() const { return neighbourSteps_; }

  // Appends points on the surface to `positions` (object space): `mode` is a QRVSurfaceMode
  // of kernel/surface_positions.h, which holds the contract (GenerateSurfacePositions).
  QRVStatus GeneratePositionsFromSurface(std::int32_t mode, float lod, std::uint64_t seed,
                                         std::vector<Vec3f>& positions);

  // Bits of the derived items currently held.
  std::uint32_t ValidMask() const { return valid_; }

 private:
  bool Usable() const { return positions_ != nullptr && vertexCount_ >= 1; }
  template <typename T>
  T* Alloc(std::size_t count) {
    return memory_->AllocateArray<T>(count);
  }
  void Free(void* block) { memory_->Release(block); }

  // The steps of Set, in order; each returns its status and leaves emptying to Set.
  QRVStatus StorePositions(const void* positions, std::int32_t vertexCount, std::int32_t encoding);
  QRVStatus StorePolygonSizes(const void* description, const std::int32_t* indices,
                              std::int32_t polygonCount, std::int32_t descriptionEncoding);
  QRVStatus StorePolygonIndices(const void* description, const std::int32_t* indices,
                                std::int32_t descriptionEncoding);
  QRVStatus StoreChannel(const QRVChannelInput& input, int which);
  QRVStatus StoreMotion(const QRVVertexChannelInput& motion);

  // Computes the item of `bit` when absent; false (item released) when that fails.
  bool Ensure(std::uint32_t bit);
  bool Compute(std::uint32_t bit);

  QRVMemoryContext ownMemory_;
  QRVMemoryContext* memory_;

  std::int32_t vertexCount_ = 0;
  std::int32_t polygonCount_ = 0;
  std::int32_t nodeCount_ = 0;
  Vec3f* positions_ = nullptr;
  Vec3f* motion_ = nullptr;
  std::uint8_t* polygonSizes_ = nullptr;
  std::int32_t* polygonIndices_ = nullptr;
  struct StoredChannel {
    Vec3f* values = nullptr;
    std::int32_t valueCount = 0;
    std::int32_t* indices = nullptr;
    bool perNode = false;
  } channels_[3];

  std::uint32_t valid_ = 0;
  VertexReferenceCounts vertexReferences_;
  std::int32_t invalidPolygons_ = -1;
  PolygonSizeCounts sizeCounts_;
  QRVOctree* octree_ = nullptr;
  MeshEdges edges_;
  MeshNeighbours neighbours_;
  std::int32_t* componentNumbers_ = nullptr;
  std::uint32_t* vertexFlags_ = nullptr;
  std::uint8_t* polygonFlags_ = nullptr;
  float* polygonMeasures_ = nullptr;
  NeighbourStep* neighbourSteps_ = nullptr;
};

}  // namespace quillix
