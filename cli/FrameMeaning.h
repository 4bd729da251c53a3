#pragma once

#include <cstdint>
#include <string>

#include "cli/JsonText.h"
#include "simulator/RecordedSchedule.h"

namespace zor::cli {

/// What a frame tells a module, for people and as further keys of the frame's event.
struct FrameMeaning {
  std::string text;
  Json keys = Json::object();
};

/// Reads a frame of version 5's or version 3's multicast channel. The packet has `packetLength` bytes, so
/// that a frame's last byte may be no part of it.
FrameMeaning multicastMeaning(const simulator::ScheduledFrame& frame, std::size_t packetLength);

/// Reads a frame of the broadcast channel.
FrameMeaning broadcastMeaning(const simulator::ScheduledFrame& frame);

/// The Ethernet destination of frames to a dotted-quad group, or to all hosts, in lower case with colons.
std::string destinationSeen(const std::string& destination);

}  // namespace zor::cli
