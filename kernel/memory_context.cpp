#include "kernel/memory_context.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

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

std::size_t WholePages(std::size_t bytes) {
  static const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return (bytes + page - 1) / page * page;
}

}  // namespace

std::size_t QRVMemoryContext::BlockSize(const void* block) {
  return block == nullptr ? 0 : malloc_usable_size(const_cast<void*>(block));
}

bool QRVMemoryContext::Charge(std::int64_t size) {
  if (!Tracking()) return true;
  const std::int64_t now = inUse_.fetch_add(size, std::memory_order_relaxed) + size;
  if (LimitOn() && now > Limit()) {
    inUse_.fetch_sub(size, std::memory_order_relaxed);
    return false;
  }
  std::int64_t peak = peak_.load(std::memory_order_relaxed);
  while (now > peak && !peak_.compare_exchange_weak(peak, now, std::memory_order_relaxed)) {
  }
  return true;
}

void* QRVMemoryContext::Allocate(std::size_t bytes) {
  void* block = std::malloc(bytes == 0 ? 1 : bytes);
  if (block == nullptr) return nullptr;
  if (!Charge(static_cast<std::int64_t>(malloc_usable_size(block)))) {
    std::free(block);
    return nullptr;
  }
  AdviseHugePages(block, bytes);
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

void* QRVMemoryContext::AllocateScratch(std::size_t bytes) {
  const std::size_t size = WholePages(bytes == 0 ? 1 : bytes);
  if (size < bytes) return nullptr;
  void* block = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (block == MAP_FAILED) return nullptr;
  if (!Charge(static_cast<std::int64_t>(size))) {
    munmap(block, size);
    return nullptr;
  }
  AdviseHugePages(block, size);
  return block;
}

void QRVMemoryContext::ReleaseScratch(void* block, std::size_t bytes, std::size_t keep) {
  if (block == nullptr) return;
  const std::size_t from = keep == 0 ? 0 : WholePages(keep);
  const std::size_t to = WholePages(bytes == 0 ? 1 : bytes);
  if (from >= to) return;
  munmap(static_cast<char*>(block) + from, to - from);
  if (Tracking()) inUse_.fetch_sub(static_cast<std::int64_t>(to - from), std::memory_order_relaxed);
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
