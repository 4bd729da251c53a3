#include "ZOR/net/UdpSocket.h"
#include "ZOR/smartconfig/FrameLength.h"
#include "ZOR/smartconfig/Schedules.h"
#include "ZOR/state/SmartConfigStatus.h"

namespace zor {
namespace {

// What is added to the channel's length base: positions lie below values, values below sync 2.
constexpr std::int32_t kSync1 = 0;
constexpr std::int32_t kSync2 = 358;
constexpr std::int32_t kSync3 = 1;
constexpr std::int32_t kFirstPosition = 2;
constexpr std::int32_t kFirstValue = 102;

/// Sends the frame `base + added` as often as `repeat` says, each followed by a wait. Returns 0, or
/// `code` when there is no socket.
std::int32_t sendRepeated(Air& air, std::int32_t added, const ZorTunable& repeat, std::int32_t code) {
  for (std::int32_t count = 0; count < repeat; ++count) {
    if (air.cancelled()) return 0;
    if (air.send(kZorEveryHost, frameLength(s_ZorSmart5_BcLen, added)) < 0) return code;
    air.wait(s_ZorSmart5_BcCharInterval);
  }
  return 0;
}

std::int32_t sendSyncs(Air& air) {
  const ZorTunable& repeat = s_ZorSmart5_BcTagRepeat;
  std::int32_t status = sendRepeated(air, kSync1, repeat, kZorBroadcastSync1Failed);
  if (status == 0) status = sendRepeated(air, kSync2, repeat, kZorBroadcastSync2Failed);
  if (status == 0) status = sendRepeated(air, kSync3, repeat, kZorBroadcastSync3Failed);
  return status;
}

std::int32_t sendByte(Air& air, std::int32_t position, std::uint8_t value) {
  const ZorTunable& repeat = s_ZorSmart5_BcDataRepeat;
  const std::int32_t status = sendRepeated(air, kFirstValue + value, repeat, kZorBroadcastValueFailed);
  if (status < 0) return status;
  return sendRepeated(air, kFirstPosition + position, repeat, kZorBroadcastPositionFailed);
}

std::int32_t sendCycle(Air& air, const PacketV5& packet) {
  if (const std::int32_t status = sendSyncs(air); status < 0) return status;
  for (std::int32_t i = 0; i < packet.length; ++i) {
    if (air.cancelled()) return 0;
    if (const std::int32_t status = sendByte(air, i, packet.bytes[i]); status < 0) return status;
  }
  air.wait(s_ZorSmart5_BcLoopInterval);
  return 0;
}

}  // namespace

std::int32_t sendBroadcastBlock(Air& air, const PacketV5& packet) {
  for (std::int32_t cycle = 0; cycle < s_ZorSmart5_BcLoopRepeat; ++cycle) {
    if (air.cancelled()) return 0;
    if (const std::int32_t status = sendCycle(air, packet); status < 0) return status;
    if (!air.cancelled()) air.endCycle();
  }
  air.wait(s_ZorSmart5_BcBlockInterval);
  return 0;
}

}  // namespace zor
