#include "ZOR/smartconfig/PacketV5.h"

#include <algorithm>
#include <cstring>

#include "ZOR/smartconfig/Crc8.h"
#include "ZOR/state/Limits.h"

namespace {

constexpr std::uint8_t kHeadBase = 0x10;
constexpr std::size_t kHeaderSizeV5 = 4;

}  // namespace

std::int32_t ZorBuildPacketSmartConfigV5(void* out, const char* ssid, const char* password,
                                         const void* append, std::uint32_t appendLength) {
  const std::size_t ssidLength = strnlen(ssid, kZorMaxSsidLength);
  const std::size_t passwordLength = strnlen(password, kZorMaxPassPhraseLength);
  const std::size_t room = kZorMaxPayloadLength - ssidLength - passwordLength;
  const std::size_t appended = std::min<std::size_t>(appendLength, room);
  const std::size_t payloadLength = ssidLength + passwordLength + appended;

  auto* const packet = static_cast<std::uint8_t*>(out);
  std::uint8_t* const payload = packet + kHeaderSizeV5;
  std::memcpy(payload, ssid, ssidLength);
  std::memcpy(payload + ssidLength, password, passwordLength);
  if (appended > 0) std::memcpy(payload + ssidLength + passwordLength, append, appended);

  packet[0] = static_cast<std::uint8_t>(kHeadBase + appended);
  packet[1] = static_cast<std::uint8_t>(ZorGetCrc8(payload, static_cast<std::uint32_t>(payloadLength)));
  packet[2] = static_cast<std::uint8_t>(ssidLength);
  packet[3] = static_cast<std::uint8_t>(passwordLength);
  return static_cast<std::int32_t>(kHeaderSizeV5 + payloadLength);
}
