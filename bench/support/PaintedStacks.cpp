#include "bench/support/PaintedStacks.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace zor::bench {
namespace {

constexpr std::size_t kStackSize = 256 * 1024;
constexpr std::uint8_t kPaint = 0xA5;
constexpr std::size_t kMaxThreads = 64;

std::array<std::uint8_t*, kMaxThreads> stacks{};
std::atomic<std::size_t> started{0};

/// The stack is never unmapped, because it is read after its thread has ended.
std::uint8_t* makeStack() {
  void* const memory =
      mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
  if (memory == MAP_FAILED || started == kMaxThreads) std::abort();
  std::memset(memory, kPaint, kStackSize);
  return stacks[started++] = static_cast<std::uint8_t*>(memory);
}

}  // namespace

std::size_t threadsStarted() {
  return started;
}

std::size_t stackUsed(std::size_t index) {
  const std::uint8_t* const lowest = stacks.at(index);
  const std::uint8_t* const end = lowest + kStackSize;
  return static_cast<std::size_t>(end -
                                  std::find_if(lowest, end, [](std::uint8_t b) { return b != kPaint; }));
}

}  // namespace zor::bench

/// Replaces the C library's function and ignores the attributes that callers ask for.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t*, void* (*routine)(void*),
                              void* arg) noexcept {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, zor::bench::makeStack(), zor::bench::kStackSize);
  const int result = create(thread, &attributes, routine, arg);
  pthread_attr_destroy(&attributes);
  return result;
}
