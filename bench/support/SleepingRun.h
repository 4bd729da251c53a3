#pragma once

#include <atomic>
#include <thread>

#include "ZOR/smartconfig/SenderInputs.h"

namespace zor::bench {

/// How a sender waits for N milliseconds.
enum class Sleeps {
  counted,         ///< N sleeps of one millisecond with a cancellation test before each.
  oneForEachFrame  ///< One sleep of N milliseconds.
};

/// The baseline of the senders: a version 5 run with the library's schedules and sockets, which waits as such
/// senders are commonly written.
class SleepingRun {
 public:
  /// Starts the broadcast sender and then the multicast sender.
  SleepingRun(const SenderInputs& inputs, Sleeps sleeps);
  ~SleepingRun();
  SleepingRun(const SleepingRun&) = delete;
  SleepingRun& operator=(const SleepingRun&) = delete;

  void cancel() { cancelled_ = true; }
  bool sendersRunning() const { return broadcastRunning_ || multicastRunning_; }

 private:
  std::atomic<bool> cancelled_{false};
  std::atomic<bool> broadcastRunning_{true};
  std::atomic<bool> multicastRunning_{true};
  std::thread broadcast_;
  std::thread multicast_;
};

/// The baseline of a listener: receives for at most 10 ms at a time and drops what it receives.
class ReceiveLoop {
 public:
  explicit ReceiveLoop(std::int32_t port);
  ~ReceiveLoop();
  ReceiveLoop(const ReceiveLoop&) = delete;
  ReceiveLoop& operator=(const ReceiveLoop&) = delete;

  void cancel() { cancelled_ = true; }
  bool running() const { return running_; }
  std::int32_t descriptor() const { return descriptor_; }

 private:
  std::int32_t descriptor_;
  std::atomic<bool> cancelled_{false};
  std::atomic<bool> running_{true};
  std::thread thread_;
};

}  // namespace zor::bench
