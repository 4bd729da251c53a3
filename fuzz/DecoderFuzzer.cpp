#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "fuzz/Fuzz.h"
#include "tests/support/RunOnAir.h"

using zor::receiver::Credentials;
using zor::receiver::Decoder;
using zor::receiver::MacAddress;
using zor::receiver::Observation;

namespace {

constexpr MacAddress kNeighbour = {2, 0, 0, 0, 0, 9};
constexpr std::size_t kMostFrames = 400;  ///< Of a run; the longest one is decoded after 300.
constexpr std::size_t kMany = 8;          ///< Frames of a run, or strangers with one frame each.

/// The frames of one cycle of one channel, which a run repeats without end.
class Cycle final : public zor::Air {
 public:
  bool cancelled() override { return false; }
  std::int32_t send(const char* destination, std::int32_t length) override {
    frames_.push_back(observed({periodMs_, destination, length}));
    return length;
  }
  void wait(const ZorTunable& interval) override { wait(std::int32_t{interval}); }
  void wait(std::int32_t milliseconds) override { periodMs_ += milliseconds; }

  bool empty() const { return frames_.empty(); }

  /// The next frame of the endless run.
  Observation frame() const {
    Observation frame = frames_[next_];
    frame.timeMicroseconds += begun_;
    return frame;
  }
  std::int64_t time() const { return frames_[next_].timeMicroseconds + begun_; }

  void next() {
    if (++next_ < frames_.size()) return;
    next_ = 0;
    begun_ += periodMs_ * kMicrosecondsPerMs;
  }

 private:
  static constexpr std::int64_t kMicrosecondsPerMs = 1000;

  std::vector<Observation> frames_;
  std::int64_t periodMs_ = 0;
  std::size_t next_ = 0;
  std::int64_t begun_ = 0;  ///< When the present repetition began, microseconds.
};

/// The frames of an endless run, one after the other.
class EndlessRun {
 public:
  EndlessRun(const RunTexts& texts, RunKind kind) {
    s_ZorSmart5_McLoopRepeat = s_ZorSmart5_BcLoopRepeat = 1;
    const zor::SenderInputs inputs = texts.inputs();
    if (kind == RunKind::version3) {
      zor::sendCycleV3(multicast_, zor::buildPacketV3(inputs), zor::NoSocket::isIgnored);
      return;
    }
    const zor::PacketV5 packet = zor::buildPacketV5(inputs);
    const zor::PacketV3 mixed = kind == RunKind::mixed ? zor::buildPacketV3(inputs) : zor::PacketV3();
    if (kind != RunKind::broadcast) zor::sendMulticastBlock(multicast_, packet, mixed);
    if (kind != RunKind::multicast) zor::sendBroadcastBlock(broadcast_, packet);
  }

  Observation frame() const { return isMulticast() ? multicast_.frame() : broadcast_.frame(); }
  void next() { isMulticast() ? multicast_.next() : broadcast_.next(); }

 private:
  bool isMulticast() const {
    if (multicast_.empty() || broadcast_.empty()) return broadcast_.empty();
    return multicast_.time() <= broadcast_.time();
  }

  Cycle multicast_, broadcast_;
};

std::vector<Observation> firstFrames(const RunTexts& texts, int count) {
  EndlessRun run(texts, RunKind::both);
  std::vector<Observation> frames;
  for (; count > 0; --count, run.next()) frames.push_back(run.frame());
  return frames;
}

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

/// The frame as an access point relays it, with a header for quality of service.
Observation copyOf(Observation frame) {
  frame.timeMicroseconds += 1'500;
  frame.frameLength += 2;
  return frame;
}

/// The CRC of the packet that says this.
unsigned crcOf(const RunTexts& texts, bool isVersion3) {
  std::string covered = texts.ssid + texts.password;
  if (isVersion3) {
    covered.insert(covered.begin(),
                   {static_cast<char>(texts.ssid.size()), static_cast<char>(texts.password.size())});
  } else {
    covered += texts.append;
  }
  return ZorGetCrc8(covered.data(), static_cast<std::uint32_t>(covered.size()));
}

/// True when nothing but a CRC that holds by chance lets `credentials` pass for these texts.
bool haveCrcOf(const RunTexts& texts, const Credentials& credentials) {
  const bool isVersion3 = credentials.encoding == zor::receiver::Encoding::version3;
  const RunTexts heard{credentials.ssid, credentials.passPhrase,
                       std::string(credentials.append.begin(), credentials.append.end())};
  const std::size_t room = std::min<std::size_t>(16, 96 - texts.ssid.size() - texts.password.size());
  return crcOf(heard, isVersion3) ==
         crcOf({texts.ssid, texts.password, texts.append.substr(0, room)}, isVersion3);
}

/// What happens to the next frame of the run. `relayed` also brings the access point's copy, which can pass
/// for another frame unless every frame is relayed: then it means that only the copy is heard. Those from
/// `stray` on can forge a packet, CRC and all, so after them no report is judged.
enum Fate { once, again, lost, afterNeighbour, afterGarbage, relayed, stray, held, rerun, crowd, many };

/// One byte says what happens to a frame. Two of its values stand for several frames, so that short inputs
/// can be long runs.
Fate nextFate(FuzzedDataProvider& data) {
  const auto byte = data.ConsumeIntegral<std::uint8_t>();
  if (byte == 0xff) return many;
  return byte == 0xfe ? crowd : static_cast<Fate>(byte % crowd);
}

}  // namespace

/// A run whose frames are lost, repeated and mixed with those of another phone and with garbage: it is
/// decoded as it was sent or not at all, and always if it was not disturbed. Strangers come and go. Its own
/// phone's strays, frames that are held and another run may mislead the decoder, but do no harm.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::string ssid = data.ConsumeRandomLengthString(32).c_str();
  const std::string password = data.ConsumeRandomLengthString(64).c_str();
  const RunTexts texts{ssid, password, data.ConsumeRandomLengthString(16)};
  const auto kind = data.ConsumeIntegral<std::uint8_t>();
  EndlessRun run(texts, kRunKinds[kind % std::size(kRunKinds)]);
  const bool isRelayed = kind >= 0x80;
  static const RunTexts others{"neighbour", "another pass phrase", ""};
  static const std::vector<Observation> neighbour = firstFrames(others, 500);
  const MacAddress phone = run.frame().sender;

  static Decoder decoder;  // Made anew it would cost more than a short run.
  decoder.reset();
  bool isHeard = false, isDisturbed = false, isMisled = false, isForged = false;
  std::int64_t delay = 0;
  std::uint8_t strangers = 0;
  const auto delayed = [&](Observation frame) {
    frame.timeMicroseconds += delay;
    return frame;
  };
  const auto hear = [&](const Observation& frame) {
    const auto credentials = decoder.observe(frame);
    if (!credentials) return;
    requireSound(*credentials);
    isHeard = true;
    if (isForged) return;
    if (credentials->sender == phone)
      require(texts.are(*credentials) || (isMisled && haveCrcOf(texts, *credentials)));
    if (credentials->sender == kNeighbour) require(others.are(*credentials));
  };
  const auto hearTwice = [&](const Observation& frame) {
    hear(frame);
    hear(copyOf(frame));
  };
  const auto hearBoth = [&](const Observation& frame) { isRelayed ? hearTwice(frame) : hear(frame); };
  for (std::size_t i = 0; i < kMostFrames;) {
    if (data.remaining_bytes() == 0 && (isHeard || isDisturbed)) break;
    Observation frame = delayed(run.frame());
    Observation interrupting = neighbour[i % neighbour.size()];
    interrupting.timeMicroseconds = frame.timeMicroseconds;
    interrupting.sender = kNeighbour;
    const Fate fate = nextFate(data);
    if (fate == many) {
      for (const std::size_t end = i + kMany; i < end; ++i, run.next()) hearBoth(delayed(run.frame()));
      continue;
    }
    isDisturbed |= fate >= lost;
    if (fate == crowd) {
      for (std::size_t n = 0; n < kMany; ++n) {
        interrupting.sender = {6, 0, 0, 0, 0, strangers++};
        hear(interrupting);
      }
      continue;
    }
    isForged |= fate >= stray;
    isMisled |= fate == relayed && !isRelayed;
    if (fate == afterNeighbour) hear(interrupting);
    if (fate == afterGarbage) hear(anyFrame(data, frame.timeMicroseconds));
    if (fate == stray)
      interrupting = anyFrame(data, frame.timeMicroseconds), interrupting.sender = frame.sender;
    if (fate == stray || fate == rerun) {
      if (fate == rerun) interrupting.sender = frame.sender;
      hear(interrupting);
    }
    if (fate == held) delay += data.ConsumeIntegralInRange<std::int32_t>(0, 300'000);
    if (fate == once || fate == again) hearBoth(frame);
    if (fate == relayed) isRelayed ? hear(copyOf(frame)) : hearTwice(frame);
    if (fate == once || fate == lost || fate == relayed) {
      run.next();
      ++i;
    }
  }
  require(isHeard || isDisturbed);
  requireSoundProgress(decoder);
  return 0;
}
