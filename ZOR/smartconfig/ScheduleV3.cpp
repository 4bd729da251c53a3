#include "ZOR/smartconfig/GroupText.h"
#include "ZOR/smartconfig/Schedules.h"

namespace zor {
namespace {

constexpr const char* kMarkerGroup = "239.90.0.0";
constexpr std::int32_t kMarkerLength = 30;
constexpr std::int32_t kMarkers = 3;
constexpr std::int32_t kFirstFrameLength = 31;
constexpr std::uint8_t kEvenMarkV3 = 79;
constexpr std::uint8_t kOddMarkV3 = 82;

constexpr std::int32_t kFramePauseMs = 10;
constexpr std::int32_t kCyclePauseMs = 20;

}  // namespace

CycleV3 sendCycleV3(Air& air, const PacketV3& packet, NoSocket noSocket) {
  const bool mayEnd = noSocket == NoSocket::endsCycle;
  for (std::int32_t marker = 0; marker < kMarkers; ++marker) {
    if (air.cancelled()) return CycleV3::through;
    if (air.send(kMarkerGroup, kMarkerLength) < 0 && mayEnd) return CycleV3::noSocketForMarker;
    air.wait(kFramePauseMs);
  }
  for (std::int32_t j = 0; 2 * j < packet.length; ++j) {
    if (air.cancelled()) return CycleV3::through;
    const GroupText group(j % 2 == 0 ? kEvenMarkV3 : kOddMarkV3, &packet.bytes[2 * j]);
    if (air.send(group.text(), kFirstFrameLength + j) < 0 && mayEnd) return CycleV3::noSocketForFrame;
    air.wait(kFramePauseMs);
  }
  air.wait(kCyclePauseMs);
  return CycleV3::through;
}

}  // namespace zor
