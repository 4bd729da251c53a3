#include "bench/support/AllocationCount.h"

#include <atomic>
#include <cstddef>

namespace {

std::atomic<std::int64_t> allocations{0};

void countOne() {
  allocations.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

std::int64_t zor::bench::allocationCount() {
  return allocations;
}

// These replace the allocator of the GNU C library and call it by its internal names. Its `free` frees what
// they return.
extern "C" {

// NOLINTBEGIN(readability-identifier-naming)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t nmemb, std::size_t size);
void* __libc_realloc(void* ptr, std::size_t size);
// NOLINTEND(readability-identifier-naming)

void* malloc(std::size_t size) {
  countOne();
  return __libc_malloc(size);
}

void* calloc(std::size_t nmemb, std::size_t size) {
  countOne();
  return __libc_calloc(nmemb, size);
}

void* realloc(void* ptr, std::size_t size) {
  countOne();
  return __libc_realloc(ptr, size);
}

}  // extern "C"
