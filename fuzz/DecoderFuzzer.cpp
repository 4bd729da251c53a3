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

/// A frame that no sender composes, but close enough to a real one to be examined.
Observation anyFrame(FuzzedDataProvider& data, std::int64_t timeMicroseconds) {
  const auto kind = data.ConsumeIntegral<std::uint8_t>();
  Observation frame{timeMicroseconds, {4, 0, 0, 0, 0, static_cast<std::uint8_t>(kind >> 3)}, {}, 0};
  frame.destination.fill(0xff);
  static constexpr std::uint8_t kMarks[] = {122, 111, 114, 90, 79, 82};
  if (kind % 8 < 6) {
    const auto second = data.ConsumeIntegral<std::uint8_t>(), third = data.ConsumeIntegral<std::uint8_t>();
    frame.destination = {0x01, 0x00, 0x5e, kMarks[kind % 8], second, third};
  }
  frame.frameLength =
      kind == 0xff ? data.ConsumeIntegral<std::int32_t>() : data.ConsumeIntegral<std::int16_t>();
  if (kind == 0xfe) frame.timeMicroseconds = data.ConsumeIntegral<std::int64_t>();
  return frame;
}

/// What happens to the next frame of the run. Those from `stray` on can forge a packet, CRC and all, so after
/// them no report is judged.
enum Fate { once, again, lost, afterNeighbour, afterGarbage, copied, stray, held, rerun };

}  // namespace

/// A run whose frames are lost, repeated and mixed with those of another phone and with garbage: it is
/// decoded as it was sent or not at all, and always if it was not disturbed. Its own phone's strays, frames
/// that are held and another run may mislead the decoder, but do no harm.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::string ssid = data.ConsumeRandomLengthString(32).c_str();
  const std::string password = data.ConsumeRandomLengthString(64).c_str();
  const RunTexts texts{ssid, password, data.ConsumeRandomLengthString(16)};
  const std::vector<Observation> frames = runOnAir(texts, data.PickValueInArray(kRunKinds), 1);
  static const RunTexts others{"neighbour", "another pass phrase", ""};
  static const std::vector<Observation> neighbour = runOnAir(others, RunKind::both, 1);
  constexpr MacAddress kNeighbour = {2, 0, 0, 0, 0, 9};

  Decoder decoder;
  bool isHeard = false, isDisturbed = false, isForged = false;
  std::int64_t delay = 0;
  const auto hear = [&](const Observation& frame) {
    const auto credentials = decoder.observe(frame);
    if (!credentials) return;
    requireSound(*credentials);
    isHeard = true;
    if (isForged) return;
    if (credentials->sender == frames[0].sender) require(texts.are(*credentials));
    if (credentials->sender == kNeighbour) require(others.are(*credentials));
  };
  for (std::size_t i = 0; i < frames.size();) {
    if (data.remaining_bytes() == 0 && (isHeard || isDisturbed)) break;
    Observation frame = frames[i];
    frame.timeMicroseconds += delay;
    Observation interrupting = neighbour[i % neighbour.size()];
    interrupting.timeMicroseconds = frame.timeMicroseconds;
    interrupting.sender = kNeighbour;
    const int fate = data.ConsumeIntegralInRange<int>(once, rerun);
    isDisturbed |= fate >= lost;
    isForged |= fate >= stray;
    if (fate == afterNeighbour) hear(interrupting);
    if (fate == afterGarbage) hear(anyFrame(data, frame.timeMicroseconds));
    if (fate == stray)
      interrupting = anyFrame(data, frame.timeMicroseconds), interrupting.sender = frame.sender;
    if (fate == stray || fate == rerun) {
      if (fate == rerun) interrupting.sender = frame.sender;
      hear(interrupting);
    }
    if (fate == held) delay += data.ConsumeIntegralInRange<std::int32_t>(0, 300'000);
    if (fate == once || fate == again || fate == copied) hear(frame);
    if (fate == copied) {
      frame.timeMicroseconds += 1'500;
      frame.frameLength += 2;
      hear(frame);
    }
    if (fate == once || fate == lost || fate == copied) ++i;
  }
  require(isHeard || isDisturbed);
  requireSoundProgress(decoder);
  return 0;
}
