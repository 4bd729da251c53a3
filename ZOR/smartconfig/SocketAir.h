#pragma once

#include <cstdint>

#include "ZOR/platform/WorkerThread.h"
#include "ZOR/smartconfig/Air.h"

namespace zor {

/// The real air: a socket that is opened when it is needed and the waits of a worker's thread.
class SocketAir final : public Air {
 public:
  using Sender = std::int32_t (*)(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                  const char* destinationText, std::uint16_t port);

  /// Sends with one of the lazy senders, on the worker's own thread; `thread` outlives the air.
  SocketAir(WorkerThread& thread, Sender sender) : thread_(thread), sender_(sender) {}
  ~SocketAir() override;
  SocketAir(const SocketAir&) = delete;
  SocketAir& operator=(const SocketAir&) = delete;

  bool cancelled() override { return thread_.cancelled(); }
  std::int32_t send(const char* destination, std::int32_t length) override;
  void wait(const ZorTunable& interval) override;

  /// Waits a millisecond if nothing was sent or waited for since the last call: pacing that leaves a
  /// block empty must not spin on the clock.
  void restIfIdle();

 private:
  WorkerThread& thread_;
  Sender sender_;
  std::int32_t socket_ = -1;
  bool idle_ = true;
};

}  // namespace zor
