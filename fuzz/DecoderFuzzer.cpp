#include <algorithm>
#include <string>

#include "fuzz/Fuzz.h"
#include "tests/support/RunOnAir.h"

using zor::receiver::Credentials;
using zor::receiver::Decoder;
using zor::receiver::MacAddress;
using zor::receiver::Observation;

namespace {

void requireSound(const Credentials& credentials) {
  require(credentials.ssid.size() <= 32 && credentials.passPhrase.size() <= 64);
  require(credentials.append.size() <= 16);
  require(credentials.ssid.size() + credentials.passPhrase.size() + credentials.append.size() <= 96);
}

void requireSoundProgress(const Decoder& decoder) {
  const auto progress = decoder.progress();
  require(progress.size() <= Decoder::kMaxSenders);
  for (const auto& sender : progress) {
    require(sender.bytesKnown >= 0 && sender.bytesKnown <= 100 && sender.bytesTotal <= 100);
    require(sender.bytesTotal == 0 || sender.bytesKnown <= sender.bytesTotal);
  }
}

/// Frames that nobody has composed, near enough to real ones to be looked at.
void hearAnything(FuzzedDataProvider& data) {
  Decoder decoder;
  std::uint64_t now = 0;
  while (data.remaining_bytes() > 0) {
    const std::uint8_t kind = data.ConsumeIntegral<std::uint8_t>();
    Observation frame;
    frame.sender = {2, 0, 0, 0, 0, static_cast<std::uint8_t>(kind >> 3)};
    frame.destination.fill(0xff);
    static constexpr std::uint8_t kMarks[] = {122, 111, 114, 90, 79, 82};
    if (kind % 8 < 6) {
      const auto second = data.ConsumeIntegral<std::uint8_t>(), third = data.ConsumeIntegral<std::uint8_t>();
      frame.destination = {0x01, 0x00, 0x5e, kMarks[kind % 8], second, third};
    }
    frame.frameLength =
        kind == 0xff ? data.ConsumeIntegral<std::int32_t>() : data.ConsumeIntegral<std::int16_t>();
    if (kind == 0xfe) now = data.ConsumeIntegral<std::uint64_t>();
    now += 5000U * data.ConsumeIntegral<std::uint8_t>();
    frame.timeMicroseconds = static_cast<std::int64_t>(now);
    if (const auto credentials = decoder.observe(frame)) requireSound(*credentials);
  }
  requireSoundProgress(decoder);
}

/// A run whose frames are lost, repeated and joined by those of another run of another phone: it is
/// heard as it was or not at all.
void hearRun(FuzzedDataProvider& data) {
  const std::string ssid = data.ConsumeRandomLengthString(32).c_str();
  const std::string password = data.ConsumeRandomLengthString(64).c_str();
  const RunTexts texts{ssid, password, data.ConsumeRandomLengthString(16)};
  const RunTexts others{"neighbour", "another pass phrase", ""};
  const std::vector<Observation> frames = runOnAir(texts, data.PickValueInArray(kRunKinds), 1);
  std::vector<Observation> neighbour = runOnAir(others, RunKind::both, 1);

  Decoder decoder;
  const auto hear = [&](const Observation& frame) {
    const auto credentials = decoder.observe(frame);
    if (!credentials) return;
    requireSound(*credentials);
    require((credentials->sender == frames[0].sender ? texts : others).are(*credentials));
  };
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const std::uint8_t fate = data.ConsumeIntegral<std::uint8_t>();
    if (fate % 4 == 1) continue;
    hear(frames[i]);
    if (fate % 4 == 2) hear(frames[i]);
    if (fate % 4 == 3 && i < neighbour.size()) {
      neighbour[i].sender = MacAddress{2, 0, 0, 0, 0, 9};
      neighbour[i].timeMicroseconds = frames[i].timeMicroseconds;
      hear(neighbour[i]);
    }
  }
  requireSoundProgress(decoder);
}

}  // namespace

/// First byte: random frames, or a run with mutations.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  if (data.ConsumeBool()) {
    hearAnything(data);
  } else {
    hearRun(data);
  }
  return 0;
}
