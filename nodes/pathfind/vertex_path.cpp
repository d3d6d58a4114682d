#include "nodes/pathfind/vertex_path.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "kernel/status_codes.h"

namespace quillix {
namespace {

// Min-heap of (distance, vertex) packed into one 64-bit key: distances are non-negative
// finite floats, whose bit patterns order like their values, so one integer comparison
// orders by distance first and vertex index second. Four children per node keep the
// sift-down shallow. Storage comes from the memory context.
class KeyHeap {
 public:
  explicit KeyHeap(QRVMemoryContext& memory) : memory_(memory) {}
  ~KeyHeap() { memory_.Release(keys_); }
  KeyHeap(const KeyHeap&) = delete;
  KeyHeap& operator=(const KeyHeap&) = delete;

  static std::uint64_t Key(float distance, std::int32_t vertex) {
    return std::uint64_t(std::bit_cast<std::uint32_t>(distance)) << 32 | std::uint32_t(vertex);
  }
  static float Distance(std::uint64_t key) { return std::bit_cast<float>(std::uint32_t(key >> 32)); }
  static std::int32_t Vertex(std::uint64_t key) { return std::int32_t(std::uint32_t(key)); }

  bool Empty() const { return size_ == 0; }

  bool Push(std::uint64_t key) {
    if (size_ == capacity_ && !Grow()) return false;
    std::size_t i = size_++;
    while (i > 0) {
      const std::size_t parent = (i - 1) / 4;
      if (keys_[parent] <= key) break;
      keys_[i] = keys_[parent];
      i = parent;
    }
    keys_[i] = key;
    return true;
  }

  std::uint64_t Pop() {
    const std::uint64_t top = keys_[0];
    const std::uint64_t last = keys_[--size_];
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
      keys_[i] = keys_[best];
      i = best;
    }
    keys_[i] = last;
    return top;
  }

 private:
  bool Grow() {
    const std::size_t grown = capacity_ == 0 ? 1024 : capacity_ * 2;
    auto* keys = memory_.AllocateArray<std::uint64_t>(grown);
    if (keys == nullptr) return false;
    if (size_ > 0) std::memcpy(keys, keys_, size_ * sizeof(std::uint64_t));
    memory_.Release(keys_);
    keys_ = keys;
    capacity_ = grown;
    return true;
  }

  QRVMemoryContext& memory_;
  std::uint64_t* keys_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
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
    KeyHeap heap(memory);
    if (open[start] && !heap.Push(KeyHeap::Key(0.0f, start))) {
      status = kStatusNoMemory;
      return false;
    }
    while (!heap.Empty()) {
      const std::uint64_t key = heap.Pop();
      const std::int32_t v = KeyHeap::Vertex(key);
      // Entries superseded by a later improvement, or of settled vertices, are stale.
      if (!open[v] || KeyHeap::Distance(key) != distance[v]) continue;
      open[v] = 0;
      if (v == end) break;
      const Vec3f& p = positions[v];
      const float base = distance[v];
      for (std::int32_t i = offsets[v]; i < offsets[v + 1]; ++i) {
        const std::int32_t w = neighbours[i];
        if (!open[w]) continue;
        const float dx = p.x - positions[w].x;
        const float dy = p.y - positions[w].y;
        const float dz = p.z - positions[w].z;
        const float candidate = base + std::sqrt(dy * dy + dx * dx + dz * dz);
        if (distance[w] > candidate) {
          distance[w] = candidate;
          predecessor[w] = v;
          if (!heap.Push(KeyHeap::Key(candidate, w))) {
            status = kStatusNoMemory;
            return false;
          }
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
