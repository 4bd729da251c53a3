#include "ZOR/smartconfig/FrameLength.h"
#include "ZOR/smartconfig/GroupText.h"
#include "ZOR/smartconfig/Schedules.h"
#include "ZOR/state/SmartConfigStatus.h"

namespace zor {
namespace {

constexpr const char* kSyncGroup = "239.122.111.114";
constexpr std::uint8_t kEvenMarkV5 = 111;
constexpr std::uint8_t kOddMarkV5 = 114;

std::int32_t sendSync(Air& air) {
  for (std::int32_t tag = 0; tag < s_ZorSmart5_McTagRepeat; ++tag) {
    if (air.cancelled()) return 0;
    if (air.send(kSyncGroup, s_ZorSmart5_McLen) < 0) return kZorMulticastSyncFailed;
    air.wait(s_ZorSmart5_McCharInterval);
  }
  return 0;
}

/// The frame's index travels in its length, its two packet bytes in the group.
std::int32_t sendData(Air& air, const PacketV5& packet) {
  for (std::int32_t k = 0; 2 * k < packet.length; ++k) {
    if (air.cancelled()) return 0;
    const GroupText group(k % 2 == 0 ? kEvenMarkV5 : kOddMarkV5, &packet.bytes[2 * k]);
    if (air.send(group.text(), frameLength(s_ZorSmart5_McLen, k)) < 0) return kZorMulticastDataFailed;
    air.wait(s_ZorSmart5_McCharInterval);
  }
  return 0;
}

std::int32_t sendMixed(Air& air, const PacketV3& mixed) {
  if (mixed.length == 0) return 0;
  switch (sendCycleV3(air, mixed, NoSocket::endsCycle)) {
    case CycleV3::noSocketForMarker:
      return kZorMixedMarkerFailed;
    case CycleV3::noSocketForFrame:
      return kZorMixedFrameFailed;
    case CycleV3::through:
      break;
  }
  return 0;
}

std::int32_t sendCycle(Air& air, const PacketV5& packet, const PacketV3& mixed) {
  if (const std::int32_t status = sendSync(air); status < 0) return status;
  for (std::int32_t repeat = 0; repeat < s_ZorSmart5_McDataRepeat; ++repeat) {
    if (air.cancelled()) return 0;
    if (const std::int32_t status = sendData(air, packet); status < 0) return status;
  }
  air.wait(s_ZorSmart5_McLoopInterval);
  return sendMixed(air, mixed);
}

}  // namespace

std::int32_t sendMulticastBlock(Air& air, const PacketV5& packet, const PacketV3& mixed) {
  for (std::int32_t cycle = 0; cycle < s_ZorSmart5_McLoopRepeat; ++cycle) {
    if (air.cancelled()) return 0;
    if (const std::int32_t status = sendCycle(air, packet, mixed); status < 0) return status;
    if (!air.cancelled()) air.endCycle();
  }
  air.wait(s_ZorSmart5_McBlockInterval);
  return 0;
}

}  // namespace zor
