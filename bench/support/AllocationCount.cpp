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

// The GNU C library's own names of its allocator, which these stand in front of. What they return is freed
// by its `free`.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) {
  countOne();
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  countOne();
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  countOne();
  return __libc_realloc(memory, size);
}

}  // extern "C"
