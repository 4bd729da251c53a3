#include "receiver/analysis/ByteMap.h"

#include <algorithm>
#include <cstddef>

#include "receiver/decoder/Crc8.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// The packet's length by its header, 0 when no sender builds such a header.
int packetLength(Encoding encoding, const std::array<std::uint8_t, kMaxPacketSize>& packet) {
  const bool isVersion5 = encoding == Encoding::version5;
  const int ssid = packet[isVersion5 ? wire::kVersion5SsidLength : wire::kVersion3SsidLength];
  const int passPhrase =
      packet[isVersion5 ? wire::kVersion5PassPhraseLength : wire::kVersion3PassPhraseLength];
  const int append = isVersion5 ? packet[wire::kVersion5Head] - wire::kHeadBias : 0;
  const int length =
      (isVersion5 ? wire::kVersion5Payload : wire::kVersion3Texts) + ssid + passPhrase + append;
  const bool isPossible = ssid <= wire::kMaxSsid && passPhrase <= wire::kMaxPassPhrase && append >= 0 &&
                          append <= wire::kMaxAppend && length <= wire::kMaxPacketBytes;
  return isPossible ? length : 0;
}

}  // namespace

PacketState judgePacket(Encoding encoding, const ByteMap& map, const ByteMap& other) {
  const auto isKnown = [&](std::size_t index) { return map.heard()[index] || other.heard()[index]; };
  std::array<std::uint8_t, kMaxPacketSize> packet{};
  for (std::size_t i = 0; i < packet.size(); ++i) packet[i] = map.heard()[i] ? map.value(i) : other.value(i);

  PacketState state;
  state.known = static_cast<int>((map.heard() | other.heard()).count());
  const bool isVersion5 = encoding == Encoding::version5;
  const std::size_t header = isVersion5 ? wire::kVersion5Payload : wire::kVersion3Texts;
  for (std::size_t i = 0; i < header; ++i) {
    if (!isKnown(i)) return state;
  }
  state.total = packetLength(encoding, packet);
  const auto total = static_cast<std::size_t>(state.total);
  if (total == 0) return state;
  state.known = 0;
  for (std::size_t i = 0; i < total; ++i) state.known += isKnown(i) ? 1 : 0;
  if (state.known < state.total) return state;
  const std::size_t start = isVersion5 ? wire::kVersion5Payload : wire::kVersion3SsidLength;
  const std::uint8_t crc = packet[isVersion5 ? wire::kVersion5Crc : wire::kVersion3Crc];
  state.crc = crc8(packet.data() + start, total - start) == crc ? Crc::holds : Crc::wrong;
  return state;
}

}  // namespace zor::receiver
