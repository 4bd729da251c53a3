#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// One datagram that the library handed to the system.
struct SentDatagram {
  std::chrono::steady_clock::time_point when;
  std::string destination;
  std::uint16_t port;
  std::string bytes;
  std::uint16_t localPort;
};

/// The system calls beneath the library, replaced at link time: they work as ever until a test makes
/// them fail, and every datagram is recorded. One per process.
class FakeSystem {
 public:
  FakeSystem();
  ~FakeSystem();

  /// From now on no socket can be created.
  std::atomic<bool> denySockets{false};
  /// From now on no thread can be created.
  std::atomic<bool> denyThreads{false};
  /// Milliseconds that the wall clock is ahead of the real one.
  std::atomic<std::int64_t> clockAheadMs{0};
  /// If not 0, where the wall clock stands still, microseconds.
  std::atomic<std::int64_t> frozenClockUs{0};

  /// Datagrams for which `fails` is true are not sent; the call reports EPERM.
  void failSendsWhen(std::function<bool(const SentDatagram&)> fails);

  /// The next `count` receives fail with `error`, as those of a socket that the system has taken away.
  void failReceives(int count, int error) {
    receiveError = error;
    receivesToFail = count;
  }
  std::atomic<int> receivesToFail{0};
  std::atomic<int> receiveError{0};

  /// What was handed over, in order, since the test began or had it forgotten.
  std::vector<SentDatagram> sent() const;
  void forgetSent();
  /// Waits until at least `count` datagrams were handed over; false after `limitMs`.
  bool waitForSends(std::size_t count, int limitMs) const;

  bool record(const SentDatagram& datagram);

 private:
  mutable std::mutex mutex_;
  std::vector<SentDatagram> sent_;
  std::function<bool(const SentDatagram&)> fails_;
};
