#pragma once

#include <cstdint>

#include "ZOR/facade/SmartConfigControl.h"
#include "ZOR/facade/WorkerHandle.h"
#include "ZOR/smartconfig/SenderInputs.h"
#include "ZOR/smartconfig/SocketAir.h"

namespace zor {

/// What one sender does on its worker's thread. Returns 0, or the status code of the frame for which there
/// was no socket.
using SenderBody = std::int32_t (*)(SocketAir& air, const SenderInputs& inputs);

/// Starts a sender in `handle`, which is empty, with the inputs that the suite state holds. A worker that
/// cannot be created leaves `noWorker` in the status. Application's thread.
void startSender(ZorWorkerHandle& handle, const Channel& channel, SenderBody body, std::int32_t noWorker);

/// Sends block after block until the run's time-out has passed, which is tested between blocks, or
/// the air is cancelled. `block` returns 0 or a negative status, which ends the run and is returned.
template <class Block>
std::int32_t sendUntilTimeout(SocketAir& air, Block block) {
  while (smartConfigTimeLeft() && !air.cancelled()) {
    if (const std::int32_t status = block(); status < 0) return status;
    if (!air.cancelled()) air.endBlock();
  }
  return 0;
}

}  // namespace zor
