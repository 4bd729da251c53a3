#pragma once

#include <cstdint>

#include "ZOR/facade/SmartConfigControl.h"
#include "ZOR/smartconfig/SocketAir.h"

namespace zor {

/// Sends block after block until the run's time-out has passed, which is tested between blocks, or
/// the air is cancelled. `block` returns 0 or a negative status, which ends the run and is returned.
template <class Block>
std::int32_t sendUntilTimeout(SocketAir& air, Block block) {
  while (smartConfigTimeLeft() && !air.cancelled()) {
    if (const std::int32_t status = block(); status < 0) return status;
    air.restIfIdle();
  }
  return 0;
}

}  // namespace zor
