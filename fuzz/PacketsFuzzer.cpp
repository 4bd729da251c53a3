#include <algorithm>
#include <string>

#include "fuzz/Fuzz.h"
#include "tests/support/RunOnAir.h"

using zor::receiver::Decoder;
using zor::receiver::Observation;

namespace {

constexpr int kBlocks = 2;

/// A text without NULs, since a NUL ends an SSID or a pass phrase.
std::string text(FuzzedDataProvider& data, std::size_t most) {
  return data.ConsumeRandomLengthString(most).c_str();
}

/// A run without loss is read, and the first that is read is right.
void requireHeard(const RunTexts& texts, const std::vector<Observation>& frames) {
  Decoder decoder;
  for (const Observation& frame : frames) {
    if (const auto credentials = decoder.observe(frame)) return require(texts.are(*credentials));
  }
  require(false);
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

/// An SSID, a pass phrase and application data on one of the roads from a phone to a module.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::string ssid = text(data, 40), password = text(data, 70);
  const std::string append = data.ConsumeRandomLengthString(16);
  requireSoundPackets(ssid, password, append);

  const RunTexts texts{ssid.substr(0, 32), password.substr(0, 64), append};
  const RunKind kind = data.PickValueInArray(kRunKinds);
  requireHeard(texts, runOnAir(texts, kind, kBlocks));
  return 0;
}
