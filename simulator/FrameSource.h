#pragma once

#include <cstddef>
#include <cstdint>

#include "simulator/PhonePlan.h"

namespace zor::simulator {

/// Who a frame comes from, as a module observes it.
struct Transmitter {
  receiver::MacAddress address{};
  std::int32_t overhead = 0;  ///< What headers and encryption add to each datagram, bytes.
  bool foreign = false;       ///< Its frames do not pass through the phones' access point.
};

/// The number of the phones' run that a frame is part of, or this.
inline constexpr std::size_t kNoRun = SIZE_MAX;

/// The time of a source that has ended.
inline constexpr std::int64_t kNever = INT64_MAX;

/// One frame as it leaves its sender.
struct SentFrame {
  std::int64_t timeUs = kNever;  ///< Since the module started to listen.
  Transmitter from;
  PlannedFrame frame;
  std::size_t run = kNoRun;
};

/// A sender of frames.
class FrameSource {
 public:
  FrameSource() = default;
  virtual ~FrameSource() = default;
  FrameSource(const FrameSource&) = delete;
  FrameSource& operator=(const FrameSource&) = delete;

  /// The next frame. Its time never decreases.
  const SentFrame& next() const { return upcoming; }

  /// Goes on to the frame after that.
  virtual void advance() = 0;

 protected:
  SentFrame upcoming;
};

}  // namespace zor::simulator
