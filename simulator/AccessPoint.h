#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>

#include "simulator/Environment.h"
#include "simulator/FrameSource.h"
#include "simulator/Random.h"

namespace zor::simulator {

/// Relays frames, at once or when it releases what it held, and keeps the order of the frames on the channel.
class AccessPoint {
 public:
  /// `environment` and `random` must outlive the access point.
  AccessPoint(const Environment& environment, Random& random)
      : environment_(environment), random_(random), releases_(environment.radio, random) {
    if (!environment.bothDirections) return;
    (random.below(2) == 1 ? uplinkExtra_ : relayedExtra_) = random.oneOf(kExtraOverheads);
  }

  /// Takes a frame from its sender. Times must not decrease. Calls `transmit(frame, startUs, endUs)` for all
  /// transmissions that take place up to now.
  template <class Transmit>
  void take(const SentFrame& sent, Transmit&& transmit) {
    const Held held = environment_.radio.held;
    while (held != Held::nothing && releases_.next() <= sent.timeUs) release(transmit);
    if (sent.from.foreign) return send(sent, sent.timeUs, 0, transmit);
    if (environment_.bothDirections) send(sent, sent.timeUs, uplinkExtra_, transmit);
    if (held == Held::nothing || (held == Held::multicast && !sent.frame.multicast))
      return relay(sent, sent.timeUs, transmit);
    if (held_.size() == kMaxHeld) held_.pop_front();
    held_.push_back(sent);
  }

 private:
  /// What the frames of one direction have more, bytes: QoS control 2, HT control with it 6, a fourth address
  /// 6 and with QoS 8, TKIP instead of CCMP 4, a cipher instead of none 16 or 20.
  static constexpr std::array<std::int32_t, 6> kExtraOverheads = {2, 4, 6, 8, 16, 20};

  /// How many frames are held. When one more arrives, the oldest is dropped.
  static constexpr std::size_t kMaxHeld = 64;

  template <class Transmit>
  void release(Transmit&& transmit) {
    for (const SentFrame& sent : held_) relay(sent, releases_.next(), transmit);
    held_.clear();
    releases_.pass();
  }

  template <class Transmit>
  void relay(const SentFrame& sent, std::int64_t timeUs, Transmit&& transmit) {
    send(sent, timeUs, relayedExtra_, transmit);
  }

  /// Puts a frame on the channel after those that were there first, and perhaps repeats it.
  template <class Transmit>
  void send(SentFrame sent, std::int64_t timeUs, std::int32_t extra, Transmit&& transmit) {
    sent.from.overhead += extra;
    for (int left = kMaxRetries; left >= 0; --left) {
      const std::int64_t startUs = std::max(timeUs, busyUntilUs_);
      busyUntilUs_ = startUs + airTimeUs(sent.frame.length);
      transmit(sent, startUs, busyUntilUs_);
      if (random_.fraction() >= environment_.repeats) return;
    }
  }

  /// The usual limit of IEEE 802.11 for short frames (dot11ShortRetryLimit).
  static constexpr int kMaxRetries = 7;

  const Environment& environment_;
  Random& random_;
  Releases releases_;
  std::int32_t uplinkExtra_ = 0;
  std::int32_t relayedExtra_ = 0;
  std::deque<SentFrame> held_;
  std::int64_t busyUntilUs_ = INT64_MIN;
};

}  // namespace zor::simulator
