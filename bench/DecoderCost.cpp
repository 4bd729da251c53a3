// Measures what a frame costs the receiver's decoder, against a table that only counts the frames of each
// sender.

#include <array>
#include <cstdint>
#include <ctime>
#include <unordered_map>
#include <vector>

#include "ZOR/state/Paces.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"
#include "receiver/decoder/Decoder.h"
#include "simulator/PhonePlan.h"
#include "simulator/Random.h"

namespace zor::bench {
namespace {

using receiver::Observation;
using Frames = std::vector<Observation>;

constexpr std::int32_t kOverhead = 60;

/// The first frames of a phone's run with default pacing that are heard at this loss.
Frames phoneFrames(std::size_t count, double loss) {
  const simulator::PhonePlan plan =
      simulator::makePlan({"MyNetwork", "my-pass-1234", {}}, ZorFindPace("default")->values, {});
  simulator::Random random(1);
  std::array<std::size_t, 2> sent{};  // By channel.
  const auto nextOf = [&](std::size_t channel) {
    const simulator::PlannedChannel& planned = plan.channels[channel];
    simulator::PlannedFrame frame = planned.frames[sent[channel] % planned.frames.size()];
    frame.timeUs += static_cast<std::int64_t>(sent[channel] / planned.frames.size()) * planned.periodUs;
    return frame;
  };
  Frames frames;
  while (frames.size() < count) {
    const std::size_t channel = nextOf(0).timeUs < nextOf(1).timeUs ? 0 : 1;
    const simulator::PlannedFrame next = nextOf(channel);
    ++sent[channel];
    if (random.fraction() >= loss)
      frames.push_back({next.timeUs, {2, 0, 0, 0, 0, 1}, next.destination, next.length + kOverhead});
  }
  return frames;
}

/// Group frames of an encoding at 400 a second, of this many addresses in turn.
Frames strangersFrames(std::size_t count, std::size_t addresses) {
  constexpr std::int64_t kIntervalUs = 2'500;
  simulator::Random random(1);
  const auto octet = [&random] { return static_cast<std::uint8_t>(random()); };
  Frames frames;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t number = i % addresses;
    const receiver::MacAddress sender = {6,
                                         0,
                                         0,
                                         static_cast<std::uint8_t>(number >> 16),
                                         static_cast<std::uint8_t>(number >> 8),
                                         static_cast<std::uint8_t>(number)};
    frames.push_back({static_cast<std::int64_t>(i) * kIntervalUs,
                      sender,
                      {1, 0, 0x5e, 111, octet(), octet()},
                      static_cast<std::int32_t>(kOverhead + random.below(1400))});
  }
  return frames;
}

/// A decoder that begins anew after each report, if `restarts`.
class Decoding {
 public:
  explicit Decoding(bool restarts) : restarts_(restarts) {}
  void observe(const Observation& frame) {
    if (decoder_.observe(frame) && restarts_) decoder_.reset();
  }

 private:
  receiver::Decoder decoder_;
  bool restarts_;
};

/// Counts the frames of each sender.
class Counting {
 public:
  void observe(const Observation& frame) {
    std::uint64_t key = 0;
    for (const std::uint8_t byte : frame.sender) key = key << 8 | byte;
    ++counts_[key];
  }

 private:
  std::unordered_map<std::uint64_t, std::uint32_t> counts_;
};

double threadNanoseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// Nanoseconds a frame.
template <class Receiver>
double measure(const Frames& frames, Receiver receiver) {
  const double begin = threadNanoseconds();
  for (const Observation& frame : frames) receiver.observe(frame);
  return (threadNanoseconds() - begin) / static_cast<double>(frames.size());
}

Row makeRow(const char* name, const Frames& frames, bool restarts, int repeats) {
  std::vector<double> ours;
  std::vector<double> baseline;
  for (int i = 0; i < repeats; ++i) {
    ours.push_back(measure(frames, Decoding(restarts)));
    baseline.push_back(measure(frames, Counting()));
  }
  return {{"frames", name},
          {"ns/frame", median(ours)},
          {"lowest", percentile(ours, 0)},
          {"highest", percentile(ours, 1)},
          {"baseline ns/frame", median(baseline)},
          {"to baseline", ratio(median(ours), median(baseline))}};
}

}  // namespace

void runBenchmark(Program& program) {
  std::size_t count = 100'000;
  int repeats = 21;
  program.options()
      .add_option("--frames", count, "Frames of each measurement")
      ->check(CLI::Range(1000, 10'000'000));
  program.options()
      .add_option("--repeats", repeats, "Measurements of which the median is shown")
      ->check(CLI::PositiveNumber);
  program.parse("Processor time of the decoder for each frame, against counting the frames of each sender");
  Table table("decoder-cost", "Decoder: processor time of a frame; baseline: a hash table of frame counts");
  const Frames heard = phoneFrames(count, 0.3);
  table.add(makeRow("a phone's, until it is decoded", heard, true, repeats));
  table.add(makeRow("a phone's, endless run", heard, false, repeats));
  table.add(makeRow("40 strangers'", strangersFrames(count, 40), false, repeats));
  table.add(makeRow("400 strangers'", strangersFrames(count, 400), false, repeats));
  table.add(makeRow("each a new stranger's", strangersFrames(count, count), false, repeats));
  program.print(table);
}

}  // namespace zor::bench
