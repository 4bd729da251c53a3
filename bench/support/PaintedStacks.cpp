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
constexpr std::size_t kMostThreads = 64;

std::array<std::uint8_t*, kMostThreads> stacks{};
std::atomic<std::size_t> started{0};

/// Never unmapped: it is read after its thread has ended.
std::uint8_t* makeStack() {
  void* const memory =
      mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
  if (memory == MAP_FAILED || started == kMostThreads) std::abort();
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

/// Stands in front of the C library's; the attributes that callers ask for are left aside.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t*, void* (*body)(void*),
                              void* argument) noexcept {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, zor::bench::makeStack(), zor::bench::kStackSize);
  const int result = create(thread, &attributes, body, argument);
  pthread_attr_destroy(&attributes);
  return result;
}
