// A growable array of trivially copyable values whose blocks are counted by a memory context.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

#include "kernel/memory_context.h"

namespace quillix {

// Holds `size` values in one block taken from `context` (or from the C heap when the context
// is null), so that the curve kernel's allocations show in the context's counters and obey its
// limit. A refused allocation leaves the array as it was and reports false.
template <typename T>
class CountedArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  explicit CountedArray(QRVMemoryContext* context = nullptr) : context_(context) {}
  CountedArray(const CountedArray&) = delete;
  CountedArray& operator=(const CountedArray&) = delete;
  CountedArray(CountedArray&& other) noexcept { Swap(other); }
  CountedArray& operator=(CountedArray&& other) noexcept {
    if (this != &other) {
      Free();
      Swap(other);
    }
    return *this;
  }
  ~CountedArray() { Free(); }

  T* Data() { return data_; }
  const T* Data() const { return data_; }
  std::size_t Size() const { return size_; }
  bool Empty() const { return size_ == 0; }
  T& operator[](std::size_t i) { return data_[i]; }
  const T& operator[](std::size_t i) const { return data_[i]; }
  std::span<T> Span() { return {data_, size_}; }
  std::span<const T> Span() const { return {data_, size_}; }
  QRVMemoryContext* Context() const { return context_; }

  // Room for `capacity` values without another allocation; exact, not rounded up.
  bool Reserve(std::size_t capacity) {
    if (capacity <= capacity_) return true;
    if (capacity > SIZE_MAX / sizeof(T)) return false;
    T* block = static_cast<T*>(Allocate(capacity * sizeof(T)));
    if (block == nullptr) return false;
    if (size_ != 0) std::memcpy(block, data_, size_ * sizeof(T));
    Release(data_);
    data_ = block;
    capacity_ = capacity;
    return true;
  }
  // Room for `extra` more values, growing at least geometrically so that repeated small
  // requests cost amortised constant time.
  bool Grow(std::size_t extra) {
    if (extra > SIZE_MAX - size_) return false;
    const std::size_t needed = size_ + extra;
    if (needed <= capacity_) return true;
    return Reserve(needed > capacity_ * 2 ? needed : capacity_ * 2);
  }
  // Sets the size; new values are left uninitialised.
  bool Resize(std::size_t size) {
    if (!Reserve(size)) return false;
    size_ = size;
    return true;
  }
  // Appends one value, growing the block geometrically.
  bool PushBack(const T& value) {
    if (size_ == capacity_ && !Grow(1)) return false;
    data_[size_++] = value;
    return true;
  }
  void Clear() { size_ = 0; }
  void Free() {
    Release(data_);
    data_ = nullptr;
    size_ = capacity_ = 0;
  }

 private:
  void* Allocate(std::size_t bytes) {
    return context_ != nullptr ? context_->Allocate(bytes) : std::malloc(bytes == 0 ? 1 : bytes);
  }
  void Release(void* block) {
    if (context_ != nullptr)
      context_->Release(block);
    else
      std::free(block);
  }
  void Swap(CountedArray& other) {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    std::swap(context_, other.context_);
  }

  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  QRVMemoryContext* context_ = nullptr;
};

}  // namespace quillix
