#pragma once

#include <chrono>
#include <thread>

/// Waits until `condition` holds; false when it does not within `limitMs`.
template <class Condition>
bool waitUntil(Condition condition, int limitMs) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= limit) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return true;
}
