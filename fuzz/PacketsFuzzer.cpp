#include <algorithm>
#include <string>

#include "ZOR/ZorSuite.h"
#include "fuzz/Fuzz.h"

namespace {

/// Returns a text without NULs, since a NUL ends an SSID or a pass phrase.
std::string text(FuzzedDataProvider& data, std::size_t maxLength) {
  return data.ConsumeRandomLengthString(maxLength).c_str();
}

void requireSoundPackets(const std::string& ssid, const std::string& password, const std::string& append) {
  std::uint8_t packet[kZorPacketV5BufferSize] = {};
  const std::int32_t length = ZorBuildPacketSmartConfigV5(
      packet, ssid.c_str(), password.c_str(), append.data(), static_cast<std::uint32_t>(append.size()));
  require(length >= 4 && length <= 100 && packet[2] <= 32 && packet[3] <= 64);
  require(std::all_of(packet + length, packet + sizeof packet, [](std::uint8_t byte) { return byte == 0; }));
  std::uint8_t older[kZorPacketV3BufferSize] = {};
  const std::int32_t olderLength = ZorBuildPacketSmartConfigV3(older, ssid.c_str(), password.c_str());
  require(olderLength == 3 + packet[2] + packet[3]);
}

}  // namespace

/// Builds the packets of both versions from an SSID, a pass phrase and application data.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::string ssid = text(data, 40), password = text(data, 70);
  requireSoundPackets(ssid, password, data.ConsumeRandomLengthString(16));
  return 0;
}
