#include "ZOR/net/Clock.h"

#include <sys/time.h>

#include <atomic>
#include <cstdint>

namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

/// Time of day of the first call, microseconds; no whole second in it means not yet called.
std::atomic<std::int64_t> clockStart{0};

std::int64_t timeOfDay() {
  timeval now{};
  gettimeofday(&now, nullptr);
  return std::int64_t{now.tv_sec} * kMicrosecondsPerSecond + now.tv_usec;
}

}  // namespace

long ZorGetUsec() {
  const std::int64_t now = timeOfDay();
  std::int64_t start = clockStart.load();
  if (start < kMicrosecondsPerSecond && clockStart.compare_exchange_strong(start, now)) return 0;
  // Seconds and microseconds are subtracted apart, the latter truncated toward zero.
  const std::int64_t seconds = now / kMicrosecondsPerSecond - start / kMicrosecondsPerSecond;
  const std::int64_t microseconds = now % kMicrosecondsPerSecond - start % kMicrosecondsPerSecond;
  return static_cast<long>(seconds * 1000 + microseconds / 1000);
}
