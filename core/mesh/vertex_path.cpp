#include "core/mesh/vertex_path.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "kernel/status_codes.h"

namespace quillix {
namespace {

// A vertex's search state: its distance and where it stands in the heap, read together by
// every relaxation.
struct VertexRecord {
  float distance;
  std::int32_t slot;  // heap index, or kOutside / kClosed
};
constexpr std::int32_t kOutside = -1;  // not in the heap, not settled (never reached or blocked)
constexpr std::int32_t kClosed = -2;   // settled
constexpr VertexRecord kFreshRecord = {kUnreachedDistance, kOutside};

// Min-heap of open vertices keyed by (distance, vertex index) packed into one 64-bit key:
// distances are non-negative finite floats, whose bit patterns order like their values, so one
// integer comparison orders by distance first and vertex index second. Each vertex is in the
// heap at most once; an improved distance moves it up in place (decrease-key), which keeps
// the heap no larger than the number of reached vertices. Four children per node keep it
// shallow. The heap fills `keys` from the front and the settled vertices fill it from the
// back (a vertex is reached once, so both together never exceed the vertex count); the two
// ranges list every record the search wrote.
class VertexHeap {
 public:
  VertexHeap(VertexRecord* records, std::uint64_t* keys, std::size_t capacity)
      : records_(records), keys_(keys), capacity_(capacity) {}

  static std::uint64_t Key(float distance, std::int32_t vertex) {
    return std::uint64_t(std::bit_cast<std::uint32_t>(distance)) << 32 | std::uint32_t(vertex);
  }
  static std::int32_t Vertex(std::uint64_t key) { return std::int32_t(std::uint32_t(key)); }

  bool Empty() const { return size_ == 0; }
  std::int32_t Top() const { return Vertex(keys_[0]); }

  // Inserts the open `vertex`, or lowers its key when it is already in the heap.
  void PushOrDecrease(float distance, std::int32_t vertex) {
    const std::int32_t at = records_[vertex].slot;
    SiftUp(at != kOutside ? std::size_t(at) : size_++, Key(distance, vertex));
  }

  std::int32_t Pop() {
    const std::uint64_t top = keys_[0];
    const std::uint64_t last = keys_[--size_];
    records_[Vertex(top)].slot = kClosed;
    keys_[capacity_ - ++settled_] = top;
    if (size_ > 0) {
      std::size_t i = 0;
      for (;;) {
        const std::size_t first = 4 * i + 1;
        if (first >= size_) break;
        std::size_t best = first;
        if (first + 4 <= size_) {
          // Keys are unique (they hold the vertex), so the minimum is one child; chosen
          // without branches, which the processor could not predict.
          const std::uint64_t* k = keys_ + first;
          const std::size_t low = k[1] < k[0] ? 1 : 0, high = k[3] < k[2] ? 3 : 2;
          best += k[high] < k[low] ? high : low;
        } else {
          for (std::size_t c = first + 1; c < size_; ++c) {
            if (keys_[c] < keys_[best]) best = c;
          }
        }
        if (last <= keys_[best]) break;
        Place(i, keys_[best]);
        i = best;
      }
      Place(i, last);
    }
    return Vertex(top);
  }

  // Puts back every record the search wrote, so that the next search starts clean.
  void ResetRecords() {
    for (std::size_t i = 0; i < size_; ++i) records_[Vertex(keys_[i])] = kFreshRecord;
    for (std::size_t i = capacity_ - settled_; i < capacity_; ++i)
      records_[Vertex(keys_[i])] = kFreshRecord;
    size_ = settled_ = 0;
  }

 private:
  void Place(std::size_t i, std::uint64_t key) {
    keys_[i] = key;
    records_[Vertex(key)].slot = std::int32_t(i);
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

  VertexRecord* records_;
  std::uint64_t* keys_;
  std::size_t capacity_;
  std::size_t size_ = 0;
  std::size_t settled_ = 0;
};

// Makes room in `work` for `n` vertices; records of a new block start fresh.
bool ReserveWork(VertexPathWork& work, std::size_t n, QRVMemoryContext& memory) {
  const std::size_t recordBytes = n * sizeof(VertexRecord);
  const bool newRecords = work.records.data == nullptr || work.records.capacity < recordBytes;
  if (!work.records.Reserve(recordBytes, memory)) return false;
  if (newRecords) {
    auto* records = static_cast<VertexRecord*>(work.records.data);
    std::fill(records, records + work.records.capacity / sizeof(VertexRecord), kFreshRecord);
  }
  return work.predecessors.Reserve(n * sizeof(std::int32_t), memory) &&
         work.order.Reserve(n * sizeof(std::uint64_t), memory);
}

}  // namespace

bool FindVertexPath(const QRVGeometry& geometry, std::int32_t start, std::int32_t end,
                    std::int32_t*& path, std::int32_t& pathLength, std::int32_t algorithm,
                    const std::uint8_t* vertexFlags, QRVStatus& status, QRVMemoryContext& memory,
                    VertexPathWork* work) {
  status = kStatusOk;
  const std::int32_t vertexCount = geometry.VertexCount();
  const std::int32_t maxLength = pathLength < 1 ? vertexCount : pathLength;
  pathLength = 0;

  // Each failing check overwrites the one before: the last failing check decides.
  const Vec3f* positions = geometry.Positions();
  const std::int32_t* offsets = geometry.NeighbourOffsets();
  const std::int32_t* neighbours = geometry.NeighbourLists();
  // Neighbour and step length side by side, when the geometry holds them; the lengths are
  // bit-identical to measuring each step here.
  const NeighbourStep* steps = geometry.NeighbourSteps();
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

  VertexPathWork privateWork;
  VertexPathWork& w = work != nullptr ? *work : privateWork;
  const std::size_t n = std::size_t(vertexCount);
  if (!ReserveWork(w, n, memory)) {
    status = kStatusNoMemory;
    return false;
  }
  auto* records = static_cast<VertexRecord*>(w.records.data);
  auto* predecessor = static_cast<std::int32_t*>(w.predecessors.data);
  VertexHeap heap(records, static_cast<std::uint64_t*>(w.order.data), n);

  // A blocked vertex is never reached: its record stays fresh, so only reached vertices are
  // written and reset.
  const auto relax = [&](std::int32_t to, float candidate, std::int32_t from) {
    VertexRecord& record = records[to];
    if (record.slot == kClosed || !(record.distance > candidate)) return;
    if (record.slot == kOutside && vertexFlags != nullptr && vertexFlags[to] == 0) return;
    record.distance = candidate;
    predecessor[to] = from;
    __builtin_prefetch(offsets + to);  // read when `to` is settled, to find its row
    heap.PushOrDecrease(candidate, to);
  };
  if (vertexFlags == nullptr || vertexFlags[start] != 0) {
    records[start].distance = 0.0f;
    heap.PushOrDecrease(0.0f, start);
  }
  while (!heap.Empty()) {
    const std::int32_t v = heap.Pop();
    if (v == end) break;
    const float base = records[v].distance;
    const std::int32_t first = offsets[v], stop = offsets[v + 1];
    // The vertex now on top is most often the next one settled: fetching its row while this
    // one relaxes hides the miss that otherwise dominates on meshes numbered without locality.
    if (!heap.Empty()) {
      const std::int32_t next = heap.Top();
      if (steps != nullptr) {
        __builtin_prefetch(steps + offsets[next]);
        __builtin_prefetch(steps + offsets[next + 1] - 1);
      } else {
        __builtin_prefetch(neighbours + offsets[next]);
      }
    }
    if (steps != nullptr) {
      for (std::int32_t i = first; i < stop; ++i) relax(steps[i].vertex, base + steps[i].length, v);
    } else {
      const Vec3f& p = positions[v];
      for (std::int32_t i = first; i < stop; ++i) {
        const std::int32_t to = neighbours[i];
        const float dx = p.x - positions[to].x;
        const float dy = p.y - positions[to].y;
        const float dz = p.z - positions[to].z;
        relax(to, base + std::sqrt(dy * dy + dx * dx + dz * dz), v);
      }
    }
  }
  // Predecessors need no reset: only those of reached vertices are ever read.
  const bool reached = records[end].slot == kClosed;
  heap.ResetRecords();

  if (!reached) {
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
