#pragma once

#include <sys/types.h>

#include <cstdint>
#include <vector>

namespace zor::bench {

/// What threads have used so far.
struct ThreadUse {
  double cpuMs = 0;
  std::int64_t wakeUps = 0;  ///< Voluntary context switches: each ends in a wake-up.

  ThreadUse operator-(const ThreadUse& before) const {
    return {cpuMs - before.cpuMs, wakeUps - before.wakeUps};
  }
  ThreadUse operator+(const ThreadUse& other) const { return {cpuMs + other.cpuMs, wakeUps + other.wakeUps}; }
};

using ThreadIds = std::vector<pid_t>;

/// Returns the process's threads, oldest first.
ThreadIds threadIds();

/// Returns the process's threads that are not in `before`, oldest first.
ThreadIds threadIdsSince(const ThreadIds& before);

/// Returns what the kernel has counted for these threads of the process; nothing for those that have ended.
ThreadUse useOf(const ThreadIds& threads);

}  // namespace zor::bench
