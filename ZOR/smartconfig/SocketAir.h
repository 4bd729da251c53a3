#pragma once

#include <cstdint>

#include "ZOR/net/LazySend.h"
#include "ZOR/platform/WorkerThread.h"
#include "ZOR/smartconfig/Air.h"
#include "ZOR/smartconfig/SendLog.h"
#include "ZOR/state/Counters.h"

namespace zor {

/// What one sender does its own way.
struct Channel {
  LazySender send;
  SenderCounters& counters;
  const char* threadName;
  const char* logMark;  ///< What the lines about failed sends start with.
};

/// Version 5 multicast, and version 3.
inline constexpr Channel kMulticastChannel{sendMulticast, multicastCounters, "zor-mc", "m"};
/// Version 5 broadcast.
inline constexpr Channel kBroadcastChannel{sendBroadcast, broadcastCounters, "zor-bc", "b"};

/// The real air: a socket that is opened when it is needed and the waits of a worker's thread. It counts for
/// the run's report.
class SocketAir final : public Air {
 public:
  /// Sends on the worker's own thread; `thread` and `channel` outlive the air.
  SocketAir(WorkerThread& thread, const Channel& channel)
      : thread_(thread), channel_(channel), log_(channel.logMark) {}
  ~SocketAir() override;
  SocketAir(const SocketAir&) = delete;
  SocketAir& operator=(const SocketAir&) = delete;

  bool cancelled() override { return thread_.cancelled(); }
  std::int32_t send(const char* destination, std::int32_t length) override;
  void wait(const ZorTunable& interval) override;
  void wait(std::int32_t milliseconds) override;
  void endCycle() override { channel_.counters.cycles.add(); }

  /// Counts a block. Waits a millisecond if nothing was sent or waited for in it: pacing that leaves a block
  /// empty must not spin on the clock.
  void endBlock();

  /// Logs the failed sends that no line has reported yet.
  void endRun() { log_.flush(); }

 private:
  void count(const SendResult& result);

  WorkerThread& thread_;
  const Channel& channel_;
  SendLog log_;
  std::int32_t socket_ = -1;
  bool idle_ = true;
};

}  // namespace zor
