#include "simulator/Airs.h"

#include <algorithm>

namespace zor::simulator {
namespace {

constexpr std::int64_t kMs = 1000;

Environment held(Held which, std::int64_t ms) {
  Environment environment;
  environment.radio.held = which;
  environment.radio.holdUs = ms * kMs;
  return environment;
}

Environment ownChatter(double framesPerSecond) {
  Environment environment;
  environment.ownChatterPerSecond = framesPerSecond;
  return environment;
}

Environment neighbours(double framesPerSecond, int devices, bool foreign) {
  Environment environment;
  environment.neighbours = {framesPerSecond, devices, foreign};
  return environment;
}

Environment corrected(Environment environment, double meanSeconds, std::int64_t maxPauseMs) {
  environment.earlierRun = {true, meanSeconds, maxPauseMs * kMs};
  return environment;
}

/// Returns `environment` with one member set.
template <class Member, class Value>
Environment with(Environment environment, Member Environment::*member, const Value& value) {
  environment.*member = value;
  return environment;
}

std::vector<NamedAir> makeQuietAirs() {
  Environment bursts;
  bursts.radio.bursts = true;
  return {{"one by one", {}},
          {"bursts", bursts},
          {"held 100 ms", held(Held::groups, 100)},
          {"held 300 ms", held(Held::groups, 300)},
          {"multicast held 300 ms", held(Held::multicast, 300)}};
}

/// Somebody else corrects a pass phrase while other devices look for each other and one streams a film.
Environment busyHome() {
  Environment environment = corrected(ownChatter(5), 2, 5000);
  environment.neighbours = {8, 10, false};
  environment.videoMulticast = true;
  return environment;
}

std::vector<NamedAir> makeAirs() {
  const Environment quiet;
  const Environment both = with(quiet, &Environment::bothDirections, true);
  const Environment held300 = held(Held::groups, 300);
  Environment byLength;
  byLength.radio.byLength = true;
  std::vector<NamedAir> airs = makeQuietAirs();
  airs.insert(airs.end(),
              {{"loss by length", byLength},
               {"jitter 6 ms", with(quiet, &Environment::delays, SenderDelays{6000, 0})},
               {"stalls 80 ms", with(quiet, &Environment::delays, SenderDelays{300, 1})},
               {"chatter 1/s", ownChatter(1)},
               {"chatter 5/s", ownChatter(5)},
               {"chatter 16/s", ownChatter(16)},
               {"repeats", with(quiet, &Environment::repeats, 0.2)},
               {"both directions", both},
               {"both directions + repeats", with(both, &Environment::repeats, 0.2)},
               {"both directions + held 300 ms", with(held300, &Environment::bothDirections, true)},
               {"range extender", with(quiet, &Environment::rangeExtender, true)},
               {"hopping module", with(quiet, &Environment::hopping, true)},
               {"video", with(quiet, &Environment::videoMulticast, true)},
               {"10 home devices", neighbours(8, 10, false)},
               {"400 strangers", neighbours(400, 400, true)},
               {"new addresses", neighbours(400, 0, true)},
               {"corrected within 60 ms", corrected(quiet, 0.5, 60)},
               {"corrected within 5 s", corrected(quiet, 2, 5000)},
               {"corrected within 5 s + held 300 ms", corrected(held300, 2, 5000)},
               {"chatter 5/s + held 300 ms", with(held300, &Environment::ownChatterPerSecond, 5)},
               {"busy home", busyHome()}});
  return airs;
}

}  // namespace

const std::vector<NamedAir>& quietAirs() {
  static const std::vector<NamedAir> kAirs = makeQuietAirs();
  return kAirs;
}

const std::vector<NamedAir>& airs() {
  static const std::vector<NamedAir> kAirs = makeAirs();
  return kAirs;
}

const NamedAir* findAir(std::string_view name) {
  const auto air = std::find_if(airs().begin(), airs().end(),
                                [&](const NamedAir& candidate) { return candidate.name == name; });
  return air == airs().end() ? nullptr : &*air;
}

}  // namespace zor::simulator
