#pragma once

#include <array>

#include "simulator/FrameSource.h"
#include "simulator/Random.h"

namespace zor::simulator {

/// Another device's video to one group: seven cells of 188 bytes and an RTP header (RFC 2250) every 25 ms,
/// which is 0.4 Mbit/s. Much more would fill a channel of 1 Mbit/s.
class VideoStream final : public FrameSource {
 public:
  VideoStream(const Transmitter& from, Random& random) {
    constexpr std::int32_t kLength = 7 * 188 + 12;
    // Groups of the administrative scope (RFC 2365), some with an octet that the encodings use too.
    constexpr std::array<std::uint8_t, 6> kSecondOctets = {1, 79, 90, 111, 114, 122};
    const auto octet = [&] { return static_cast<std::uint8_t>(random.below(256)); };
    upcoming.timeUs = random.below(kPeriodUs);
    upcoming.from = from;
    upcoming.frame.destination = {0x01, 0x00, 0x5E, random.oneOf(kSecondOctets), octet(), octet()};
    upcoming.frame.length = kLength;
    upcoming.frame.multicast = true;
  }

  void advance() override { upcoming.timeUs += kPeriodUs; }

 private:
  static constexpr std::int64_t kPeriodUs = 25'000;
};

}  // namespace zor::simulator
