// Byte accounting shared by every kernel allocation.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace quillix {

// Counts the bytes that kernel objects hold, optionally refusing allocations beyond a limit.
//
// Blocks are counted with the allocator's real block size (malloc_usable_size), not the
// requested size, so that the counters describe the process's real footprint. The counters
// are atomics: one context may be shared by a geometry and by many search threads reading
// it, and their concurrent allocations must not corrupt the totals.
class QRVMemoryContext {
 public:
  QRVMemoryContext() = default;
  QRVMemoryContext(const QRVMemoryContext&) = delete;
  QRVMemoryContext& operator=(const QRVMemoryContext&) = delete;

  // Tracking on (default): every Allocate/Release updates the counters.
  void SetTracking(bool on) { tracking_.store(on ? 1 : 0, std::memory_order_relaxed); }
  bool Tracking() const { return tracking_.load(std::memory_order_relaxed) != 0; }

  // Limit switch and limit in bytes: with the switch on, an allocation that would take the
  // bytes in use above `limitBytes` is refused. The limit only works while tracking is on.
  void SetLimit(bool on, std::int64_t limitBytes) {
    limitBytes_.store(limitBytes, std::memory_order_relaxed);
    limitOn_.store(on ? 1 : 0, std::memory_order_relaxed);
  }
  bool LimitOn() const { return limitOn_.load(std::memory_order_relaxed) != 0; }
  std::int64_t Limit() const { return limitBytes_.load(std::memory_order_relaxed); }

  std::int64_t BytesInUse() const { return inUse_.load(std::memory_order_relaxed); }
  std::int64_t PeakBytes() const { return peak_.load(std::memory_order_relaxed); }
  // Starts a new peak measurement at the current bytes in use.
  void ResetPeak() { peak_.store(BytesInUse(), std::memory_order_relaxed); }

  // Returns an uninitialised block of at least `bytes` bytes (0 is treated as 1), or null
  // when the system has no memory or the limit refuses it. Release it with Release.
  void* Allocate(std::size_t bytes);
  // Typed convenience: `count` elements of T, uninitialised (T must be trivial).
  template <typename T>
  T* AllocateArray(std::size_t count) {
    if (count > SIZE_MAX / sizeof(T)) return nullptr;
    return static_cast<T*>(Allocate(count * sizeof(T)));
  }
  // Releases a block of Allocate; null is ignored.
  void Release(void* block);
  // Cuts a block of Allocate down to `bytes` (0 is treated as 1), keeping its first `bytes`
  // bytes, and returns it (it may move). Never refused: the bytes in use only go down. Lets a
  // result be built in a block sized for the worst case and then kept at its exact size
  // without copying it into a second block.
  void* Shrink(void* block, std::size_t bytes);

  // The byte count that the context charges for `block` (its real block size).
  static std::size_t BlockSize(const void* block);

 private:
  std::atomic<std::uint16_t> tracking_{1};
  std::atomic<std::uint16_t> limitOn_{0};
  std::atomic<std::int64_t> limitBytes_{0};
  std::atomic<std::int64_t> inUse_{0};
  std::atomic<std::int64_t> peak_{0};
};

// A reusable scratch block accounted by a memory context. It grows only when its capacity
// is below the need (old block released, a new one of exactly the needed size allocated) and
// keeps whatever size it reached; the destructor releases it.
struct QRVWorkBuffer {
  void* data = nullptr;
  std::size_t capacity = 0;             // bytes
  QRVMemoryContext* context = nullptr;  // accounts the block; null uses the caller's context

  QRVWorkBuffer() = default;
  explicit QRVWorkBuffer(QRVMemoryContext* ctx) : context(ctx) {}
  QRVWorkBuffer(const QRVWorkBuffer&) = delete;
  QRVWorkBuffer& operator=(const QRVWorkBuffer&) = delete;
  ~QRVWorkBuffer() { Free(); }

  // Makes room for `bytes`; false (buffer left empty) when the context refuses.
  // `fallback` accounts the block when the record has no context of its own.
  bool Reserve(std::size_t bytes, QRVMemoryContext& fallback);
  void Free();
};

}  // namespace quillix
