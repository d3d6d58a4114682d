#include "kernel/memory_context.h"

#include <malloc.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

namespace quillix {
namespace {

// A mesh's large arrays are written in full right after they are allocated, and on fresh
// pages every 4 KiB first touch is a fault into the kernel: a quarter of a 10^6-vertex build.
// Asking for transparent huge pages on the 2 MiB-aligned inside of a large block (which no
// other block shares) takes one fault per 2 MiB instead. It is only advice: where huge pages
// are switched off or none are free, the block is served with small pages as before.
constexpr std::uintptr_t kHugePage = std::uintptr_t(2) << 20;
constexpr std::size_t kHugePageAdviceMinimum = 2 * kHugePage;

void AdviseHugePages(void* block, std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  if (bytes < kHugePageAdviceMinimum) return;
  const auto begin = (reinterpret_cast<std::uintptr_t>(block) + kHugePage - 1) & ~(kHugePage - 1);
  const auto end = (reinterpret_cast<std::uintptr_t>(block) + bytes) & ~(kHugePage - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
  (void)block, (void)bytes;
#endif
}

}  // namespace

std::size_t QRVMemoryContext::BlockSize(const void* block) {
  return block == nullptr ? 0 : malloc_usable_size(const_cast<void*>(block));
}

void* QRVMemoryContext::Allocate(std::size_t bytes) {
  void* block = std::malloc(bytes == 0 ? 1 : bytes);
  if (block != nullptr) AdviseHugePages(block, bytes);
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
