#include "cli/ExpectedTime.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "cli/KnownPaces.h"
#include "simulator/SampleSecret.h"
#include "simulator/Trial.h"

namespace zor::cli {
namespace {

using receiver::ChannelKind;
using receiver::LegReport;

constexpr int kRuns = 100;
constexpr int kUsualPacket = 4 + 12 + 16;

/// A secret whose version 5 packet has this many bytes.
simulator::Secret secretOf(int packetBytes) {
  constexpr int kHeader = 4;
  constexpr int kMaxSsid = kZorMaxSsidLength;
  constexpr int kMaxPassPhrase = kZorMaxPassPhraseLength;
  const int texts = std::clamp(packetBytes - kHeader, 0, kMaxSsid + kMaxPassPhrase);
  const int ssid = std::max(std::min(texts / 2, kMaxSsid), texts - kMaxPassPhrase);
  return simulator::sampleSecret(static_cast<std::size_t>(ssid), static_cast<std::size_t>(texts - ssid));
}

double lossOf(const LegReport& leg) {
  double loss = 0;
  for (const receiver::ChannelReport& channel : leg.channels) loss = std::max(loss, channel.loss.value_or(0));
  return loss;
}

simulator::Channels channelsOf(const LegReport& leg) {
  simulator::Channels channels;
  channels.broadcast = leg.channel(ChannelKind::broadcast).syncLength.has_value();
  channels.version3 = leg.channel(ChannelKind::version3).frames > 0;
  channels.multicast =
      channels.version3 || !channels.broadcast || leg.channel(ChannelKind::multicast).frames > 0;
  return channels;
}

}  // namespace

std::string expectedTime(const LegReport& leg) {
  const auto name = receiver::fittingPace(leg, knownPaces());
  const ZorPace* const known = name ? ZorFindPace(*name) : nullptr;
  const ZorPace* const pace = known != nullptr ? known : ZorFindPace("default");
  const int packet = leg.bytesTotal > 0 ? leg.bytesTotal : kUsualPacket;
  const simulator::PhonePlan plan = simulator::makePlan(secretOf(packet), pace->values, channelsOf(leg));
  simulator::Scenario scenario;
  scenario.phones = {{&plan}};
  scenario.environment.radio.loss = lossOf(leg);
  std::vector<double> times;
  for (const simulator::Outcome& outcome : simulator::runTrials(scenario, kRuns))
    times.push_back(outcome.decoderSeconds);
  const auto median = times.begin() + kRuns / 2;
  std::nth_element(times.begin(), median, times.end());
  std::array<char, 32> text{};
  if (*median >= simulator::kGiveUpSeconds) {
    std::snprintf(text.data(), text.size(), "more than %.0f s", simulator::kGiveUpSeconds);
  } else {
    std::snprintf(text.data(), text.size(), *median < 10 ? "about %.1f s" : "about %.0f s", *median);
  }
  return text.data();
}

}  // namespace zor::cli
