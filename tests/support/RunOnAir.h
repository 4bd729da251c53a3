#pragma once

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "ZOR/smartconfig/Schedules.h"
#include "receiver/decoder/Decoder.h"
#include "tests/support/RecordingAir.h"

/// The texts of one run, within the fields' limits.
struct RunTexts {
  std::string ssid, password, append;

  zor::SenderInputs inputs() const {
    zor::SenderInputs inputs;
    ssid.copy(inputs.ssid, sizeof inputs.ssid - 1);
    password.copy(inputs.password, sizeof inputs.password - 1);
    append.copy(reinterpret_cast<char*>(inputs.appendData), sizeof inputs.appendData - 1);
    inputs.appendLen = static_cast<std::int32_t>(std::min(append.size(), sizeof inputs.appendData - 1));
    return inputs;
  }

  /// True when `credentials` are these texts, as far as their encoding carries them.
  bool are(const zor::receiver::Credentials& credentials) const {
    const std::string heard(credentials.append.begin(), credentials.append.end());
    const bool version3 = credentials.encoding == zor::receiver::Encoding::version3;
    const std::size_t room = std::min<std::size_t>(16, 96 - ssid.size() - password.size());
    return credentials.ssid == ssid && credentials.passPhrase == password &&
           heard == (version3 ? "" : append.substr(0, room));
  }
};

/// The channels of a run: those of version 5, with version 3 mixed in or not, or only version 3.
enum class RunKind { multicast, broadcast, both, mixed, version3 };
inline constexpr RunKind kRunKinds[] = {RunKind::multicast, RunKind::broadcast, RunKind::both, RunKind::mixed,
                                        RunKind::version3};

/// The frame as a module outside the network observes it.
inline zor::receiver::Observation observed(const Frame& frame) {
  constexpr std::int32_t kOverhead = 60;
  in_addr address{};
  inet_pton(AF_INET, frame.destination.c_str(), &address);
  const std::uint32_t host = ntohl(address.s_addr);
  zor::receiver::Observation result{frame.ms * 1000, {2, 0, 0, 0, 0, 1}, {}, frame.length + kOverhead};
  result.destination.fill(0xff);
  if (host == 0xffffffff) return result;
  result.destination = {0x01,
                        0x00,
                        0x5e,
                        static_cast<std::uint8_t>((host >> 16) & 0x7f),
                        static_cast<std::uint8_t>(host >> 8),
                        static_cast<std::uint8_t>(host)};
  return result;
}

/// Everything that a run of `blocks` blocks puts on the air, in the order in which it is heard.
inline std::vector<zor::receiver::Observation> runOnAir(const RunTexts& texts, RunKind kind, int blocks) {
  RecordingAir multicast, broadcast;
  const zor::SenderInputs inputs = texts.inputs();
  const zor::PacketV5 packet = zor::buildPacketV5(inputs);
  const zor::PacketV3 older = zor::buildPacketV3(inputs);
  for (int block = 0; block < blocks; ++block) {
    if (kind == RunKind::version3) {
      for (int cycle = 0; cycle < 5; ++cycle) zor::sendCycleV3(multicast, older, zor::NoSocket::isIgnored);
      continue;
    }
    const bool mixed = kind == RunKind::mixed;
    if (kind != RunKind::broadcast)
      zor::sendMulticastBlock(multicast, packet, mixed ? older : zor::PacketV3());
    if (kind != RunKind::multicast) zor::sendBroadcastBlock(broadcast, packet);
  }
  std::vector<Frame> frames = multicast.frames;
  frames.insert(frames.end(), broadcast.frames.begin(), broadcast.frames.end());
  std::stable_sort(frames.begin(), frames.end(), [](const Frame& a, const Frame& b) { return a.ms < b.ms; });
  std::vector<zor::receiver::Observation> observations;
  for (const Frame& frame : frames) observations.push_back(observed(frame));
  return observations;
}
