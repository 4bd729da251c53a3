#include "cli/PacketFrames.h"

namespace zor::cli {
namespace {

constexpr std::size_t kMulticastDataRepeat = 5;   ///< Its place in a pace.
constexpr std::size_t kBroadcastDataRepeat = 12;  ///< Likewise.

std::int64_t lengthV5(const Payload& payload) {
  std::uint8_t packet[kZorPacketV5BufferSize] = {};
  return ZorBuildPacketSmartConfigV5(packet, payload.ssid.c_str(), payload.passPhrase.c_str(),
                                     payload.append.data(),
                                     static_cast<std::uint32_t>(payload.append.size()));
}

std::int64_t lengthV3(const Payload& payload) {
  std::uint8_t packet[kZorPacketV3BufferSize] = {};
  return ZorBuildPacketSmartConfigV3(packet, payload.ssid.c_str(), payload.passPhrase.c_str());
}

}  // namespace

// A multicast frame carries two bytes; a byte takes two broadcast frames, its value and its position.
PacketFrames::PacketFrames(const ProvisionPlan& plan, const Payload& payload) {
  if (plan.mode == SendMode::version3) {
    multicast_ = (lengthV3(payload) + 1) / 2;
    return;
  }
  const std::int64_t bytes = lengthV5(payload);
  const auto carries = [&](std::size_t repeat) { return !plan.pace || (*plan.pace)[repeat] > 0; };
  if (carries(kMulticastDataRepeat)) multicast_ = (bytes + 1) / 2;
  if (carries(kBroadcastDataRepeat)) broadcast_ = 2 * bytes;
}

bool PacketFrames::sentWhole(const ZorRunReport& report) const {
  return (multicast_ > 0 && report.multicast.datagrams >= multicast_) ||
         (broadcast_ > 0 && report.broadcast.datagrams >= broadcast_);
}

}  // namespace zor::cli
