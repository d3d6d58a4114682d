#include "core/mesh/vertex_path.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "kernel/status_codes.h"

namespace quillix {
namespace {

// Min-heap of open vertices keyed by (distance, vertex index) packed into one 64-bit key:
// distances are non-negative finite floats, whose bit patterns order like their values, so one
// integer comparison orders by distance first and vertex index second. Each vertex is in the
// heap at most once; an improved distance moves it up in place (decrease-key), which keeps
// the heap no larger than the number of reached vertices. Four children per node keep it
// shallow. Storage comes from the memory context.
class VertexHeap {
 public:
  explicit VertexHeap(QRVMemoryContext& memory) : memory_(memory) {}
  ~VertexHeap() {
    memory_.Release(keys_);
    memory_.Release(slot_);
  }
  VertexHeap(const VertexHeap&) = delete;
  VertexHeap& operator=(const VertexHeap&) = delete;

  // Room for `vertexCount` vertices; those with open[v] == 0 start closed.
  bool Allocate(std::size_t vertexCount, const std::uint8_t* open) {
    slot_ = memory_.AllocateArray<std::int32_t>(vertexCount);
    keys_ = memory_.AllocateArray<std::uint64_t>(vertexCount);
    if (slot_ == nullptr || keys_ == nullptr) return false;
    for (std::size_t v = 0; v < vertexCount; ++v) slot_[v] = open[v] ? kOutside : kClosed;
    return true;
  }

  // The open-mark test of the relaxation, read from the heap's own per-vertex array so that
  // a relaxation touches one array less.
  bool Closed(std::int32_t vertex) const { return slot_[vertex] == kClosed; }

  static std::uint64_t Key(float distance, std::int32_t vertex) {
    return std::uint64_t(std::bit_cast<std::uint32_t>(distance)) << 32 | std::uint32_t(vertex);
  }
  static std::int32_t Vertex(std::uint64_t key) { return std::int32_t(std::uint32_t(key)); }

  bool Empty() const { return size_ == 0; }

  // Inserts the open `vertex`, or lowers its key when it is already in the heap.
  void PushOrDecrease(float distance, std::int32_t vertex) {
    const std::uint64_t key = Key(distance, vertex);
    const std::int32_t at = slot_[vertex];
    SiftUp(at != kOutside ? std::size_t(at) : size_++, key);
  }

  std::int32_t Pop() {
    const std::int32_t top = Vertex(keys_[0]);
    slot_[top] = kClosed;
    const std::uint64_t last = keys_[--size_];
    if (size_ == 0) return top;
    std::size_t i = 0;
    for (;;) {
      const std::size_t first = 4 * i + 1;
      if (first >= size_) break;
      std::size_t best = first;
      const std::size_t stop = first + 4 < size_ ? first + 4 : size_;
      for (std::size_t c = first + 1; c < stop; ++c) {
        if (keys_[c] < keys_[best]) best = c;
      }
      if (last <= keys_[best]) break;
      Place(i, keys_[best]);
      i = best;
    }
    Place(i, last);
    return top;
  }

 private:
  static constexpr std::int32_t kOutside = -1;  // open, not reached yet
  static constexpr std::int32_t kClosed = -2;   // settled or blocked

  void Place(std::size_t i, std::uint64_t key) {
    keys_[i] = key;
    slot_[Vertex(key)] = std::int32_t(i);
  }
  void SiftUp(std::size_t i, std::uint64_t key) {
    while (i > 0) {
      const std::size_t parent = (i - 1) / 4;
      if (keys_[parent] <= key) break;
      Place(i, keys_[parent]);
      i = parent;
    }
    Place(i, key);
  }

  QRVMemoryContext& memory_;
  std::uint64_t* keys_ = nullptr;
  std::int32_t* slot_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace

bool FindVertexPath(const QRVGeometry& geometry, std::int32_t start, std::int32_t end,
                    std::int32_t*& path, std::int32_t& pathLength, std::int32_t algorithm,
                    const std::uint8_t* vertexFlags, QRVStatus& status, QRVMemoryContext& memory,
                    QRVWorkBuffer* distances, QRVWorkBuffer* predecessors,
                    QRVWorkBuffer* openMarks) {
  status = kStatusOk;
  const std::int32_t vertexCount = geometry.VertexCount();
  const std::int32_t maxLength = pathLength < 1 ? vertexCount : pathLength;
  pathLength = 0;

  // Each failing check overwrites the one before: the last failing check decides.
  const Vec3f* positions = geometry.Positions();
  const std::int32_t* offsets = geometry.NeighbourOffsets();
  const std::int32_t* neighbours = geometry.NeighbourLists();
  // Step lengths computed once with the neighbour lists, when the geometry holds them; they
  // are bit-identical to computing each step here.
  const float* lengths = geometry.NeighbourDistances();
  if (positions == nullptr) status = kStatusInvalidState;
  if (geometry.NeighbourCounts() == nullptr || offsets == nullptr || neighbours == nullptr) {
    status = kStatusNullPointer;
  }
  if (start < 0 || start >= vertexCount || end < 0 || end >= vertexCount) {
    status = kStatusIllegalParameter;
  }
  if (status != kStatusOk) return false;
  const std::int32_t* components = geometry.ComponentNumbers();
  if (components != nullptr && components[start] != components[end]) {
    status = kStatusPathNotFound;
    return false;
  }
  if (start == end) {
    status = kStatusSameVertex;
    return false;
  }
  if (algorithm != 0) {
    status = kStatusIdOutOfRange;
    return false;
  }

  QRVWorkBuffer privateDistances(&memory), privatePredecessors(&memory), privateMarks(&memory);
  QRVWorkBuffer& distanceBuffer = distances != nullptr ? *distances : privateDistances;
  QRVWorkBuffer& predecessorBuffer = predecessors != nullptr ? *predecessors : privatePredecessors;
  QRVWorkBuffer& markBuffer = openMarks != nullptr ? *openMarks : privateMarks;
  const std::size_t n = std::size_t(vertexCount);
  if (!distanceBuffer.Reserve(n * sizeof(float), memory) ||
      !predecessorBuffer.Reserve(n * sizeof(std::int32_t), memory) ||
      !markBuffer.Reserve(n, memory)) {
    status = kStatusNoMemory;
    return false;
  }
  auto* distance = static_cast<float*>(distanceBuffer.data);
  auto* predecessor = static_cast<std::int32_t*>(predecessorBuffer.data);
  auto* open = static_cast<std::uint8_t*>(markBuffer.data);
  std::fill(distance, distance + n, kUnreachedDistance);
  std::fill(predecessor, predecessor + n, -1);
  if (vertexFlags == nullptr) {
    std::memset(open, 1, n);
  } else {
    for (std::size_t v = 0; v < n; ++v) open[v] = vertexFlags[v] != 0;
  }
  distance[start] = 0.0f;

  {
    VertexHeap heap(memory);
    if (!heap.Allocate(n, open)) {
      status = kStatusNoMemory;
      return false;
    }
    if (open[start]) heap.PushOrDecrease(0.0f, start);
    while (!heap.Empty()) {
      const std::int32_t v = heap.Pop();
      open[v] = 0;
      if (v == end) break;
      const Vec3f& p = positions[v];
      const float base = distance[v];
      for (std::int32_t i = offsets[v]; i < offsets[v + 1]; ++i) {
        const std::int32_t w = neighbours[i];
        if (heap.Closed(w)) continue;
        float step;
        if (lengths != nullptr) {
          step = lengths[i];
        } else {
          const float dx = p.x - positions[w].x;
          const float dy = p.y - positions[w].y;
          const float dz = p.z - positions[w].z;
          step = std::sqrt(dy * dy + dx * dx + dz * dz);
        }
        const float candidate = base + step;
        if (distance[w] > candidate) {
          distance[w] = candidate;
          predecessor[w] = v;
          heap.PushOrDecrease(candidate, w);
        }
      }
    }
  }

  if (predecessor[end] == -1) {
    status = kStatusPathNotFound;
    return false;
  }
  std::int32_t count = 1;
  for (std::int32_t v = end; v != start; v = predecessor[v]) ++count;
  if (count > maxLength) {
    status = kStatusTooManyPoints;
    return false;
  }
  if (path == nullptr) {
    path = memory.AllocateArray<std::int32_t>(std::size_t(count));
    if (path == nullptr) {
      status = kStatusNoMemory;
      return false;
    }
  }
  std::int32_t at = count - 1;
  for (std::int32_t v = end; at >= 0; v = predecessor[v]) path[at--] = v;
  pathLength = count;
  return true;
}

}  // namespace quillix
