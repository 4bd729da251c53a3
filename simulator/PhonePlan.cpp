#include "simulator/PhonePlan.h"

#include <arpa/inet.h>

#include <algorithm>

#include "ZOR/ZorSuite.h"
#include "ZOR/smartconfig/Packets.h"
#include "ZOR/state/CopyText.h"
#include "simulator/Radio.h"
#include "simulator/RecordedSchedule.h"

namespace zor::simulator {
namespace {

// Where the schedules put the pieces. Lengths count from the length base of the channel.
constexpr std::int32_t kFirstPosition = 2;
constexpr std::int32_t kFirstValue = 102;
constexpr std::int32_t kSync2 = 358;
constexpr std::int32_t kFirstLengthVersion3 = 31;
constexpr int kTextsStartVersion5 = 4;

// Second octet of the data groups, of even frames and of odd ones.
constexpr int kEvenVersion5 = 111;
constexpr int kOddVersion5 = 114;
constexpr int kEvenVersion3 = 79;
constexpr int kOddVersion3 = 82;

bool isOneOf(int octet, int even, int odd) {
  return octet == even || octet == odd;
}

int pieceVersion5(int byte, const PhonePlan& plan) {
  return byte < plan.piecesVersion5 ? byte : kNoPiece;
}

int pieceVersion3(int byte, const PhonePlan& plan) {
  if (byte == 0) return kVersion3CrcPiece;
  return byte + 1 < plan.endVersion3 ? byte + 1 : kNoPiece;
}

/// A multicast frame goes to the lower 23 bits of the group after a fixed prefix (RFC 1112).
PlannedFrame makeFrame(const ScheduledFrame& sent, std::array<std::uint8_t, 4>& group) {
  in_addr address{};
  inet_pton(AF_INET, sent.destination.c_str(), &address);
  const std::uint32_t bits = ntohl(address.s_addr);
  for (std::size_t i = 0; i < group.size(); ++i) group[i] = static_cast<std::uint8_t>(bits >> (24 - 8 * i));
  PlannedFrame frame;
  frame.timeUs = sent.timeMs * 1000;
  frame.length = sent.length;
  frame.multicast = IN_MULTICAST(bits);
  frame.destination.fill(0xFF);
  if (frame.multicast) {
    frame.destination = {0x01, 0x00, 0x5E, static_cast<std::uint8_t>(group[1] & 0x7FU), group[2], group[3]};
  }
  return frame;
}

PlannedChannel planMulticast(const RecordedSchedule& schedule, const PhonePlan& plan) {
  PlannedChannel channel{{}, schedule.periodMs * 1000};
  for (const ScheduledFrame& sent : schedule.frames) {
    std::array<std::uint8_t, 4> group{};
    PlannedFrame frame = makeFrame(sent, group);
    if (isOneOf(group[1], kEvenVersion5, kOddVersion5)) {
      const int first = 2 * (sent.length - s_ZorSmart5_McLen);
      frame.pieces = {pieceVersion5(first, plan), pieceVersion5(first + 1, plan)};
    } else if (isOneOf(group[1], kEvenVersion3, kOddVersion3)) {
      const int first = 2 * (sent.length - kFirstLengthVersion3);
      frame.pieces = {pieceVersion3(first, plan), pieceVersion3(first + 1, plan)};
    }
    channel.frames.push_back(frame);
  }
  return channel;
}

/// A value belongs to the position that follows it: both are needed.
PlannedChannel planBroadcast(const RecordedSchedule& schedule) {
  PlannedChannel channel{{}, schedule.periodMs * 1000};
  std::size_t firstValue = 0;
  for (const ScheduledFrame& sent : schedule.frames) {
    std::array<std::uint8_t, 4> group{};
    channel.frames.push_back(makeFrame(sent, group));
    const std::int32_t offset = sent.length - s_ZorSmart5_BcLen;
    if (offset >= kFirstValue && offset < kSync2) continue;
    const bool isPosition = offset >= kFirstPosition && offset < kFirstValue;
    for (; firstValue + 1 < channel.frames.size(); ++firstValue) {
      if (isPosition) channel.frames[firstValue].pieces[0] = offset - kFirstPosition;
    }
    firstValue = channel.frames.size();
  }
  return channel;
}

SenderInputs makeInputs(const Secret& secret) {
  SenderInputs inputs;
  copyText(secret.ssid, inputs.ssid);
  copyText(secret.passPhrase, inputs.password);
  const std::size_t kept = std::min(secret.append.size(), kZorMaxAppendLength);
  std::copy_n(secret.append.begin(), kept, inputs.appendData);
  inputs.appendLen = static_cast<std::int32_t>(kept);
  return inputs;
}

}  // namespace

double PhonePlan::framesPerSecond() const {
  double frames = 0;
  for (const PlannedChannel& channel : channels) {
    frames += 1e6 * static_cast<double>(channel.frames.size()) / static_cast<double>(channel.periodUs);
  }
  return frames;
}

double PhonePlan::airTimeShare() const {
  double share = 0;
  for (const PlannedChannel& channel : channels) {
    std::int64_t busyUs = 0;
    for (const PlannedFrame& frame : channel.frames) busyUs += airTimeUs(frame.length);
    share += static_cast<double>(busyUs) / static_cast<double>(channel.periodUs);
  }
  return share;
}

PhonePlan makePlan(const Secret& secret, const Pace& pace, const Channels& channels) {
  ZorSuite().SmartConfigV5_SetProperty(pace.data(), pace.size());
  const SenderInputs inputs = makeInputs(secret);
  PhonePlan plan;
  plan.secret = secret;
  const auto texts = static_cast<int>(secret.ssid.size() + secret.passPhrase.size());
  plan.piecesVersion5 = buildPacketV5(inputs).length;
  plan.endVersion3 = kTextsStartVersion5 + texts;
  if (channels.multicast && s_ZorSmart5_McLen != 0)
    plan.channels.push_back(planMulticast(recordMulticast(inputs, channels.version3), plan));
  if (channels.broadcast && s_ZorSmart5_BcLen != 0)
    plan.channels.push_back(planBroadcast(recordBroadcast(inputs)));
  return plan;
}

}  // namespace zor::simulator
