#include "ZOR/smartconfig/PacketV3.h"

#include <cstring>

#include "ZOR/smartconfig/Crc8.h"
#include "ZOR/state/Limits.h"

namespace {

constexpr std::size_t kHeaderSizeV3 = 3;

}  // namespace

std::int32_t ZorBuildPacketSmartConfigV3(void* out, const char* ssid, const char* password) {
  const std::size_t ssidLength = strnlen(ssid, kZorMaxSsidLength);
  const std::size_t passwordLength = strnlen(password, kZorMaxPassPhraseLength);
  const std::size_t length = kHeaderSizeV3 + ssidLength + passwordLength;

  auto* const packet = static_cast<std::uint8_t*>(out);
  packet[1] = static_cast<std::uint8_t>(ssidLength);
  packet[2] = static_cast<std::uint8_t>(passwordLength);
  std::memcpy(packet + kHeaderSizeV3, ssid, ssidLength);
  std::memcpy(packet + kHeaderSizeV3 + ssidLength, password, passwordLength);
  packet[0] = static_cast<std::uint8_t>(ZorGetCrc8(packet + 1, static_cast<std::uint32_t>(length - 1)));
  return static_cast<std::int32_t>(length);
}
