#include "bench/support/RandomHome.h"

#include <algorithm>

#include "bench/support/Cases.h"

namespace zor::bench {
namespace {

using simulator::Pace;
using simulator::Random;
using simulator::Secret;

/// The bytes of both texts and the append data of the longest packet.
constexpr std::size_t kMaxPayload = 96;

/// Returns up to `maxLength` bytes other than NUL, which ends a text: of all values, or of eight, which a
/// decoder can mix up more easily.
std::string randomText(Random& random, std::int64_t maxLength) {
  std::string text(static_cast<std::size_t>(random.below(maxLength + 1)), '\0');
  const bool few = random.below(2) == 1;
  for (char& c : text) c = static_cast<char>(few ? 'a' + random.below(8) : 1 + random.below(255));
  return text;
}

Secret withAppend(Secret secret, Random& random) {
  const auto room = static_cast<std::int64_t>(kMaxPayload - secret.ssid.size() - secret.passPhrase.size());
  secret.append.resize(static_cast<std::size_t>(random.below(std::min<std::int64_t>(room, 16) + 1)));
  for (std::uint8_t& byte : secret.append) byte = static_cast<std::uint8_t>(random.below(256));
  return secret;
}

Secret randomSecret(Random& random) {
  return withAppend({randomText(random, 32), randomText(random, 64), {}}, random);
}

/// Returns another secret for the same network: mostly with one letter of the pass phrase changed, as after a
/// typing error.
Secret variantOf(const Secret& secret, Random& random) {
  if (random.below(4) == 0 || secret.passPhrase.empty())
    return withAppend({secret.ssid, randomText(random, 64), {}}, random);
  Secret variant = secret;
  const auto length = static_cast<std::int64_t>(secret.passPhrase.size());
  char& letter = variant.passPhrase[static_cast<std::size_t>(random.below(length))];
  letter = static_cast<char>(letter == 'a' ? 'b' : 'a');
  return variant;
}

/// Most phones have the default pace, and most the default length bases.
Pace randomPace(Random& random) {
  constexpr std::size_t kMulticastLength = 0;
  constexpr std::size_t kBroadcastLength = 7;
  Pace pace = random.below(2) == 1 ? kDefaultPace : random.oneOf(kZorPaces).values;
  if (random.below(4) != 0) return pace;
  pace[kMulticastLength] = static_cast<std::uint8_t>(1 + random.below(100));
  pace[kBroadcastLength] = static_cast<std::uint8_t>(1 + random.below(100));
  return pace;
}

}  // namespace

RandomHome::RandomHome(const std::string& sent, std::int64_t phones, Random& random) {
  const Secret common = randomSecret(random);
  for (std::int64_t i = 0; i < phones; ++i) {
    const bool sameNetwork = i > 0 && random.below(2) == 1;
    const Secret secret = i == 0 ? common : sameNetwork ? variantOf(common, random) : randomSecret(random);
    const NamedChannels& choice = sent.empty() ? random.oneOf(channelChoices()) : findChannels(sent);
    Pace pace = randomPace(random);
    if (simulator::makePlan(secret, pace, choice.channels).channels.empty()) pace = kDefaultPace;
    plans_.push_back(simulator::makePlan(secret, pace, choice.channels));
    earlierPlans_.push_back(simulator::makePlan(variantOf(secret, random), pace, choice.channels));
  }
}

std::vector<simulator::Phone> RandomHome::phones() const {
  std::vector<simulator::Phone> phones;
  for (std::size_t i = 0; i < plans_.size(); ++i) phones.push_back({&plans_[i], &earlierPlans_[i]});
  return phones;
}

}  // namespace zor::bench
