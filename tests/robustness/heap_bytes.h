// Bytes the process's allocator holds right now, from the sanitizer's allocator when one is
// linked (its malloc replaces the C library's) and from the C library otherwise.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// Part of every sanitizer runtime's allocator interface; declared here because g++ does not
// ship the sanitizer headers.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace quillix::test {

inline std::size_t heapBytesInUse() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return __sanitizer_get_current_allocated_bytes();
#else
  return mallinfo2().uordblks;
#endif
}

}  // namespace quillix::test
