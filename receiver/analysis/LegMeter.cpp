#include "receiver/analysis/LegMeter.h"

#include <algorithm>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// Fewer frames to the groups of smart configuration may be another program's.
constexpr std::uint64_t kFramesOfRun = 3;

}  // namespace

Destination classify(const MacAddress& destination) {
  if ((destination[0] & 1) == 0) return Destination::host;
  if (destination == wire::kBroadcastAddress) return Destination::broadcast;
  if (!std::equal(wire::kGroupPrefix.begin(), wire::kGroupPrefix.end(), destination.begin()))
    return Destination::otherGroup;
  const auto octets = destination.begin() + wire::kGroupPrefix.size();
  const GroupOctets group{octets[0], octets[1], octets[2]};
  if (group == wire::kVersion5SyncGroup) return Destination::sync;
  if (group == wire::kVersion3MarkerGroup) return Destination::marker;
  switch (group.mark) {
    case wire::kVersion5EvenMark:
    case wire::kVersion5OddMark:
      return Destination::data;
    case wire::kVersion3EvenMark:
    case wire::kVersion3OddMark:
      return Destination::version3Data;
    default:
      return Destination::otherGroup;
  }
}

bool LegMeter::repeatsPrevious(const CapturedFrame& frame) {
  const bool repeats = frame.isRetry && sequence_ == frame.sequence;
  sequence_ = frame.sequence;
  return repeats;
}

bool LegMeter::observe(const CapturedFrame& frame, Destination destination, std::uint64_t number) {
  if (repeatsPrevious(frame)) {
    ++retries_;
    return false;
  }
  log_.add(frame, number);
  headerBytes_ = frame.headerBytes;
  isProtected_ = isProtected_ || frame.isProtected;
  const std::int64_t time = frame.timeMicroseconds;
  if (!firstTime_) firstTime_ = time;
  lastTime_ = time;
  if (destination == Destination::broadcast) {
    broadcast_.observe(frame.length, time);
  } else {
    observeGroup(frame, destination);
  }
  return true;
}

void LegMeter::observeGroup(const CapturedFrame& frame, Destination destination) {
  const std::int64_t time = frame.timeMicroseconds;
  const bool startsCycle = destination == Destination::sync || destination == Destination::marker;
  if (startsCycle && lastOfCycle_) pauses_.add(time - *lastOfCycle_);
  lastOfCycle_.reset();
  const std::uint8_t first = frame.destination[4];
  const std::uint8_t second = frame.destination[5];
  switch (destination) {
    case Destination::sync:
      version5_.observeSync(frame.length, time);
      break;
    case Destination::marker:
      version3_.observeSync(frame.length, time);
      break;
    case Destination::version3Data:
      version3_.observeData(frame.length, first, second, time);
      break;
    default:
      version5_.observeData(frame.length, first, second, time);
      if (version5_.isLast(frame.length)) lastOfCycle_ = time;
  }
}

bool LegMeter::isRun() const {
  return version5_.frames() + version3_.frames() >= kFramesOfRun || broadcast_.isRun();
}

LegReport LegMeter::report(Leg leg) const {
  LegReport report;
  report.leg = leg;
  report.channels = {version5_.report(), broadcast_.report(), version3_.report()};
  ChannelReport& multicast = report.channels[0];
  if (pauses_.count() > 0 && multicast.intervalMs)
    multicast.pauseMs = std::max(0.0, *pauses_.medianMs() - *multicast.intervalMs);
  for (const ChannelReport& channel : report.channels) report.frames += channel.frames;
  report.retries = retries_;
  report.isProtected = isProtected_;
  report.headerBytes = headerBytes_;
  report.firstMicroseconds = firstTime_.value_or(0);
  report.lastMicroseconds = lastTime_;
  report.log = log_.frames();
  report.leftOut = log_.leftOut();

  const PacketState version5 = judgePacket(Encoding::version5, version5_.bytes(), broadcast_.bytes());
  const PacketState version3 = judgePacket(Encoding::version3, version3_.bytes(), ByteMap());
  const PacketState& packet = version3.known > version5.known ? version3 : version5;
  report.bytesKnown = packet.known;
  report.bytesTotal = packet.total;
  report.crc = packet.crc;
  return report;
}

}  // namespace zor::receiver
