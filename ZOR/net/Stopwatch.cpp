#include "ZOR/net/Stopwatch.h"

#include <algorithm>
#include <chrono>

namespace zor {

std::int64_t steadyMs() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

std::int64_t elapsedMs(long wallStartMs, std::int64_t steadyStartMs) {
  return std::max(std::int64_t{ZorGetUsec()} - wallStartMs, steadyMs() - steadyStartMs);
}

}  // namespace zor
