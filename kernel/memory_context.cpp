#include "kernel/memory_context.h"

#include <malloc.h>

#include <cstdlib>

namespace quillix {

std::size_t QRVMemoryContext::BlockSize(const void* block) {
  return block == nullptr ? 0 : malloc_usable_size(const_cast<void*>(block));
}

void* QRVMemoryContext::Allocate(std::size_t bytes) {
  void* block = std::malloc(bytes == 0 ? 1 : bytes);
  if (block == nullptr || !Tracking()) return block;
  const auto size = static_cast<std::int64_t>(malloc_usable_size(block));
  const std::int64_t now = inUse_.fetch_add(size, std::memory_order_relaxed) + size;
  if (LimitOn() && now > Limit()) {
    inUse_.fetch_sub(size, std::memory_order_relaxed);
    std::free(block);
    return nullptr;
  }
  std::int64_t peak = peak_.load(std::memory_order_relaxed);
  while (now > peak && !peak_.compare_exchange_weak(peak, now, std::memory_order_relaxed)) {
  }
  return block;
}

void QRVMemoryContext::Release(void* block) {
  if (block == nullptr) return;
  if (Tracking()) {
    inUse_.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(block)),
                     std::memory_order_relaxed);
  }
  std::free(block);
}

void* QRVMemoryContext::Shrink(void* block, std::size_t bytes) {
  const auto before = static_cast<std::int64_t>(malloc_usable_size(block));
  void* shrunk = std::realloc(block, bytes == 0 ? 1 : bytes);
  if (shrunk == nullptr) return block;  // the block is still whole and still counted
  if (Tracking()) {
    inUse_.fetch_sub(before - static_cast<std::int64_t>(malloc_usable_size(shrunk)),
                     std::memory_order_relaxed);
  }
  return shrunk;
}

bool QRVWorkBuffer::Reserve(std::size_t bytes, QRVMemoryContext& fallback) {
  if (capacity >= bytes && data != nullptr) return true;
  QRVMemoryContext& ctx = context != nullptr ? *context : fallback;
  Free();
  context = &ctx;
  data = ctx.Allocate(bytes);
  if (data == nullptr) return false;
  capacity = bytes;
  return true;
}

void QRVWorkBuffer::Free() {
  if (data != nullptr && context != nullptr) context->Release(data);
  data = nullptr;
  capacity = 0;
}

}  // namespace quillix
