#pragma once

#include <atomic>
#include <cstdint>

#include "ZOR/state/Reports.h"

namespace zor {

/// A number that one worker counts up and any thread reads.
class Count {
 public:
  void add(std::int64_t amount = 1) { value_.fetch_add(amount, std::memory_order_relaxed); }
  void reset() { value_.store(0, std::memory_order_relaxed); }
  operator std::int64_t() const {
    return value_.load(std::memory_order_relaxed);
  }  // NOLINT: reads like an integer

 private:
  std::atomic<std::int64_t> value_{0};
};

/// The latest failure of a system call.
class ErrorNote {
 public:
  /// `atMs` is a `ZorGetUsec` reading.
  void set(std::int32_t number, std::int64_t atMs) {
    atMs_.store(atMs, std::memory_order_relaxed);
    number_.store(number, std::memory_order_relaxed);
  }
  void reset() { set(0, 0); }
  ZorSystemError get() const {
    return {number_.load(std::memory_order_relaxed), atMs_.load(std::memory_order_relaxed)};
  }

 private:
  std::atomic<std::int32_t> number_{0};
  std::atomic<std::int64_t> atMs_{0};
};

/// What a `ZorSenderReport` is made from.
struct SenderCounters {
  std::atomic<ZorWorkerState> state{ZorWorkerState::idle};
  Count datagrams, bytes, failedSends, socketsOpened, cycles, blocks;
  ErrorNote error;

  void reset(ZorWorkerState next);
  ZorSenderReport report() const;
};

/// What a `ZorLineReport` is made from.
struct LineCounters {
  Count datagrams, lines, reported, repeats, withoutDelegate, dropped, otherContent, empty;

  void reset();
  ZorLineReport report() const;
};

/// What a `ZorListenerReport` is made from.
struct ListenerCounters {
  std::atomic<ZorWorkerState> state{ZorWorkerState::idle};
  std::atomic<std::int32_t> port{0};
  LineCounters received;
  Count socketsOpened;
  ErrorNote error;

  void reset(ZorWorkerState next);
  ZorListenerReport report() const;
};

/// What a `ZorSearchReport` is made from.
struct SearchCounters {
  std::atomic<ZorWorkerState> state{ZorWorkerState::idle};
  Count requestsSent, requestsFailed, socketsOpened;
  LineCounters received;
  ErrorNote error;

  void reset(ZorWorkerState next);
  ZorSearchReport report() const;
};

/// What a `ZorUpgradeReport` is made from.
struct UpgradeCounters {
  std::atomic<ZorWorkerState> state{ZorWorkerState::idle};
  Count requestsSent, requestsFailed, socketsOpened, datagrams, answers, otherAddress, otherPort,
      notAResponse;
  ErrorNote error;

  void reset(ZorWorkerState next);
  ZorUpgradeReport report() const;
};

/// The counters of each worker kind's latest run. The application's thread resets them while no worker of the
/// kind runs; then the worker counts.
extern SenderCounters multicastCounters;
extern SenderCounters broadcastCounters;
extern ListenerCounters listenerCounters;
extern SearchCounters searchCounters;
extern UpgradeCounters upgradeCounters;

}  // namespace zor
