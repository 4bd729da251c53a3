#pragma once

#include <cstdint>

#include "ZOR/platform/Wipe.h"
#include "ZOR/smartconfig/PacketV3.h"
#include "ZOR/smartconfig/PacketV5.h"
#include "ZOR/smartconfig/SenderInputs.h"

namespace zor {

/// Bytes that a sender puts on the air, zero after `length`. They hold the pass phrase, so they are
/// wiped in the end.
template <std::int32_t Size>
struct Packet {
  Packet() = default;
  ~Packet() { wipe(bytes, sizeof bytes); }
  Packet(const Packet&) = default;
  Packet& operator=(const Packet&) = default;

  std::uint8_t bytes[Size] = {};
  std::int32_t length = 0;
};

using PacketV5 = Packet<kZorPacketV5BufferSize>;
using PacketV3 = Packet<kZorPacketV3BufferSize>;

inline PacketV5 buildPacketV5(const SenderInputs& inputs) {
  PacketV5 packet;
  packet.length = ZorBuildPacketSmartConfigV5(packet.bytes, inputs.ssid, inputs.password, inputs.appendData,
                                              static_cast<std::uint32_t>(inputs.appendLen));
  return packet;
}

inline PacketV3 buildPacketV3(const SenderInputs& inputs) {
  PacketV3 packet;
  packet.length = ZorBuildPacketSmartConfigV3(packet.bytes, inputs.ssid, inputs.password);
  return packet;
}

}  // namespace zor
