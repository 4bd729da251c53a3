#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__APPLE__) || (defined(__ANDROID__) && __ANDROID_API__ >= 28 && __ANDROID_API__ < 30)
#include <pthread.h>
#include <time.h>
#endif

namespace zor {

// `std::condition_variable::wait_until` by the monotonic clock. The standard library waits by that clock
// where the system has `pthread_cond_clockwait` (glibc 2.30, Android's API level 30); elsewhere it turns the
// deadline into one of the wall clock, and a step back of that clock would prolong the wait.

using MonotonicInstant = std::chrono::steady_clock::time_point;

#if defined(__APPLE__)

/// Waits for what is left of the time, which no clock's step changes.
inline void waitByMonotonicClock(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                                 MonotonicInstant deadline) {
  using std::chrono::nanoseconds;
  const auto left = std::chrono::duration_cast<nanoseconds>(deadline - std::chrono::steady_clock::now());
  if (left <= nanoseconds::zero()) return;
  const timespec relative = {static_cast<time_t>(left.count() / 1'000'000'000),
                             static_cast<long>(left.count() % 1'000'000'000)};
  pthread_cond_timedwait_relative_np(condition.native_handle(), lock.mutex()->native_handle(), &relative);
}

#elif defined(__ANDROID__) && __ANDROID_API__ >= 28 && __ANDROID_API__ < 30

/// Below API level 28 there is no such call, and a step back of the wall clock prolongs the wait.
inline void waitByMonotonicClock(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                                 MonotonicInstant deadline) {
  const auto instant = std::chrono::duration_cast<std::chrono::nanoseconds>(deadline.time_since_epoch());
  const timespec absolute = {static_cast<time_t>(instant.count() / 1'000'000'000),
                             static_cast<long>(instant.count() % 1'000'000'000)};
  pthread_cond_timedwait_monotonic_np(condition.native_handle(), lock.mutex()->native_handle(), &absolute);
}

#else

inline void waitByMonotonicClock(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                                 MonotonicInstant deadline) {
  condition.wait_until(lock, deadline);
}

#endif

}  // namespace zor
