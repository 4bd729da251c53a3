#include "simulator/Sources.h"

#include "simulator/Chatter.h"
#include "simulator/VideoStream.h"

namespace zor::simulator {
namespace {

/// A module starts to listen within this time of a phone's run.
constexpr std::int64_t kLatestStartUs = 60'000'000;

/// Overheads are less than this.
constexpr std::int64_t kMaxOverhead = 120;

// The first octets of the addresses of phones and of other devices.
constexpr std::uint8_t kPhones = 0x02;
constexpr std::uint8_t kNeighbours = 0x0A;
constexpr std::uint8_t kVideo = 0x0E;

Transmitter makeTransmitter(std::uint8_t kind, std::size_t number, Random& random) {
  return {{kind, 0, 0, 0, static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)},
          static_cast<std::int32_t>(random.below(kMaxOverhead)),
          false};
}

std::unique_ptr<FrameSource> makeNeighbours(const Neighbours& neighbours, Random& random) {
  std::vector<Transmitter> devices;
  for (int i = 0; i < neighbours.devices; ++i) {
    devices.push_back(makeTransmitter(kNeighbours, devices.size(), random));
    devices.back().foreign = neighbours.foreign;
  }
  const std::span<const ChatterProtocol> protocols =
      neighbours.foreign ? std::span<const ChatterProtocol>(kShortProtocols) : kHomeProtocols;
  return std::make_unique<Chatter>(protocols, devices, neighbours.framesPerSecond, random);
}

}  // namespace

std::vector<PhoneRun> makeRuns(const Scenario& scenario, Random& random) {
  const EarlierRun& earlier = scenario.environment.earlierRun;
  std::vector<PhoneRun> runs;
  Transmitter from;
  for (std::size_t i = 0; i < scenario.phones.size(); ++i) {
    const Phone& phone = scenario.phones[i];
    if (i == 0 || !scenario.environment.rangeExtender) from = makeTransmitter(kPhones, i, random);
    RunTimes times{scenario.listens == Listens::anyTime ? -random.below(kLatestStartUs) : 0};
    if (phone.earlier != nullptr && earlier.exists) {
      times.endUs = static_cast<std::int64_t>(random.exponential(1e6 * earlier.meanSeconds));
      runs.push_back({phone.earlier, from, times, false});
      times = {times.endUs + random.below(earlier.maxPauseUs + 1)};
    }
    runs.push_back({phone.plan, from, times, true});
  }
  return runs;
}

std::vector<std::unique_ptr<FrameSource>> makeSources(const Scenario& scenario,
                                                      const std::vector<PhoneRun>& runs, Random& random) {
  const Environment& environment = scenario.environment;
  std::vector<std::unique_ptr<FrameSource>> sources;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const PhoneRun& run = runs[i];
    for (const PlannedChannel& channel : run.plan->channels) {
      sources.push_back(
          std::make_unique<ChannelSender>(channel, run.times, run.from, i, environment.delays, random));
    }
    if (!run.awaited || environment.ownChatterPerSecond <= 0) continue;
    sources.push_back(std::make_unique<Chatter>(kHomeProtocols, std::vector{run.from},
                                                environment.ownChatterPerSecond, random));
  }
  if (environment.neighbours.framesPerSecond > 0)
    sources.push_back(makeNeighbours(environment.neighbours, random));
  if (environment.videoMulticast)
    sources.push_back(std::make_unique<VideoStream>(makeTransmitter(kVideo, 0, random), random));
  return sources;
}

}  // namespace zor::simulator
