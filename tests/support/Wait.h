#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <thread>

/// How long to wait for something, in ms: `limitMs`, or hardly at all once an expectation of the test has
/// failed, so that one fault does not cost the waits of everything after it.
inline int patience(int limitMs) {
  return testing::Test::HasFailure() ? std::min(limitMs, 100) : limitMs;
}

/// Waits until `condition` holds; false when it does not within `limitMs`.
template <class Condition>
bool waitUntil(Condition condition, int limitMs) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience(limitMs));
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= limit) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return true;
}

/// The processor time, milliseconds, that the whole process takes in the next `durationMs`.
inline double processorMsWithin(int durationMs) {
  const std::clock_t before = std::clock();
  std::this_thread::sleep_for(std::chrono::milliseconds(durationMs));
  return static_cast<double>(std::clock() - before) * 1000 / CLOCKS_PER_SEC;
}
