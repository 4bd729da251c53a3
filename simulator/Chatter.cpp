#include "simulator/Chatter.h"

#include <utility>

namespace zor::simulator {
namespace {

double meanRepetitions(std::span<const ChatterProtocol> protocols) {
  double frames = 0;
  for (const ChatterProtocol& protocol : protocols) frames += protocol.repetitions;
  return frames / static_cast<double>(protocols.size());
}

Transmitter newDevice(Random& random) {
  Transmitter device;
  for (std::uint8_t& byte : device.address) byte = static_cast<std::uint8_t>(random.below(256));
  device.address[0] = 0x06;  // Locally administered, and not a phone's.
  device.foreign = true;
  return device;
}

}  // namespace

Chatter::Chatter(std::span<const ChatterProtocol> protocols, std::vector<Transmitter> devices,
                 double framesPerSecond, Random& random)
    : protocols_(protocols),
      devices_(std::move(devices)),
      random_(random),
      meanGapUs_(1e6 * meanRepetitions(protocols) / framesPerSecond) {
  ask();
  advance();
}

void Chatter::advance() {
  while (pending_.empty() || questionUs_ <= pending_.top().timeUs) ask();
  upcoming = pending_.top();
  pending_.pop();
}

void Chatter::ask() {
  questionUs_ += static_cast<std::int64_t>(random_.exponential(meanGapUs_));
  const ChatterProtocol& protocol = random_.oneOf(protocols_);
  SentFrame sent{questionUs_, anyDevice(), {}};
  sent.frame.destination = protocol.destination;
  sent.frame.multicast = protocol.destination != kToAll;
  sent.frame.length = protocol.minLength +
                      static_cast<std::int32_t>(random_.below(protocol.maxLength - protocol.minLength + 1));
  for (int i = 0; i < protocol.repetitions; ++i) {
    pending_.push(sent);
    sent.timeUs += protocol.gapUs;
  }
}

Transmitter Chatter::anyDevice() {
  return devices_.empty() ? newDevice(random_) : random_.oneOf(devices_);
}

}  // namespace zor::simulator
