#pragma once

#include <cstdint>

#include "ZOR/state/Tunables.h"

namespace zor {

/// What a schedule sends into: a socket and a worker's waits, or a test's or simulator's own.
class Air {
 public:
  virtual ~Air() = default;

  /// True once the run shall end; a schedule then returns without another frame.
  virtual bool cancelled() = 0;

  /// Sends one frame of `length` bytes to a dotted-quad address or group. Negative when there is no
  /// socket to send on; a frame that was lost for another reason counts as sent.
  virtual std::int32_t send(const char* destination, std::int32_t length) = 0;

  /// Waits for `interval` milliseconds, following its changes; 0 or less is no wait. Returns at once
  /// when the run is cancelled.
  virtual void wait(const ZorTunable& interval) = 0;

  /// The same with a length that nothing changes.
  virtual void wait(std::int32_t milliseconds) = 0;

  /// Notes that a whole cycle has been sent.
  virtual void endCycle() {}
};

}  // namespace zor
