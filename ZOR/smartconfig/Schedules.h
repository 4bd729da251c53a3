#pragma once

#include <cstdint>

#include "ZOR/smartconfig/Air.h"
#include "ZOR/smartconfig/Packets.h"

namespace zor {

// One pass of each channel, and a block of passes where the channel has blocks. A schedule returns
// when it is through or when the air is cancelled; it reads the pacing tunables afresh at each use.

/// What became of a pass of the version 3 cycle.
enum class CycleV3 { through, noSocketForMarker, noSocketForFrame };

/// What the version 3 cycle does when a frame finds no socket.
enum class NoSocket { isIgnored, endsCycle };

/// Three markers, one frame for each pair of bytes, a pause.
CycleV3 sendCycleV3(Air& air, const PacketV3& packet, NoSocket noSocket);

/// Cycles of sync frames, data frames and, with a version 3 packet that is not empty, a version 3
/// cycle. Returns 0, or the status code of the frame for which there was no socket.
std::int32_t sendMulticastBlock(Air& air, const PacketV5& packet, const PacketV3& mixed);

/// Cycles of the three sync lengths and a value and a position length for each byte. Returns 0, or
/// the status code of the frame for which there was no socket.
std::int32_t sendBroadcastBlock(Air& air, const PacketV5& packet);

}  // namespace zor
