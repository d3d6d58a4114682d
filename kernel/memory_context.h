// Byte accounting shared by every kernel allocation.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace quillix {

// Counts the bytes that kernel objects hold, optionally refusing allocations beyond a limit.
//
// Blocks are counted with the allocator's real block size (malloc_usable_size), scratch blocks
// with their whole pages, not the requested size, so that the counters describe the process's
// real footprint. The counters
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
  // A block for data that lives only while a result is built: mapped straight from the system,
  // apart from Allocate's blocks, and handed back to it page by page, so that it leaves no hole
  // among the blocks that stay. `bytes` is rounded up to whole pages, which are what is counted;
  // they are fresh pages and start at zero. Null when the system or the limit refuses.
  void* AllocateScratch(std::size_t bytes);
  template <typename T>
  T* AllocateScratchArray(std::size_t count) {
    if (count > SIZE_MAX / sizeof(T)) return nullptr;
    return static_cast<T*>(AllocateScratch(count * sizeof(T)));
  }
  // Hands back the pages of a scratch block of `bytes` bytes (as allocated) beyond its first
  // `keep` bytes: 0 releases the whole block, a smaller size cuts it down where it lies (the
  // block then counts as one of `keep` bytes). Null is ignored.
  void ReleaseScratch(void* block, std::size_t bytes, std::size_t keep = 0);

  // The byte count that the context charges for `block` (its real block size).
  static std::size_t BlockSize(const void* block);

 private:
  // Counts `size` more bytes in use; false (nothing counted) when the limit refuses them.
  bool Charge(std::int64_t size);

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
