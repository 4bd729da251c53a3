#include "ZOR/facade/RunListener.h"
#include "ZOR/facade/SuiteInterface.h"
#include "ZOR/facade/WorkerSlot.h"
#include "ZOR/platform/Log.h"
#include "ZOR/smartconfig/Schedules.h"
#include "ZOR/smartconfig/SenderRun.h"
#include "ZOR/state/SmartConfigStatus.h"
#include "ZOR/state/Tunables.h"

namespace zor {
namespace {

std::int32_t sendVersion5Multicast(SocketAir& air, const SenderInputs& inputs) {
  log("start smart v5, ssid=%s, pass=%s, append %d byte", inputs.ssid, inputs.password,
      static_cast<int>(inputs.appendLen));
  const PacketV5 packet = buildPacketV5(inputs);
  const PacketV3 mixed = inputs.mixV3 ? buildPacketV3(inputs) : PacketV3();
  const std::int32_t status = sendUntilTimeout(air, [&] { return sendMulticastBlock(air, packet, mixed); });
  if (status == 0 && !air.cancelled()) endListenerOfRun();
  return status;
}

std::int32_t sendVersion5Broadcast(SocketAir& air, const SenderInputs& inputs) {
  const PacketV5 packet = buildPacketV5(inputs);
  return sendUntilTimeout(air, [&] { return sendBroadcastBlock(air, packet); });
}

}  // namespace
}  // namespace zor

void ZorSuite::SmartConfigV5_Start(std::string_view SSID, std::string_view PASSWORD, std::int32_t TIMEOUT) {
  zor::WorkerSlot::of(s_threadSmartConfigBc).cancel(zor::CancelReason::replaced);
  zor::WorkerSlot::of(s_threadSmartConfigMc).cancel(zor::CancelReason::replaced);
  s_threadSmartConfigBc.waitUntilEmpty();
  s_threadSmartConfigMc.waitUntilEmpty();

  zor::storeSmartConfigInputs(SSID, PASSWORD, TIMEOUT);
  zor::multicastCounters.reset(ZorWorkerState::idle);
  zor::broadcastCounters.reset(ZorWorkerState::idle);
  if (s_ZorSmart5_BcLen > 0) {
    zor::startSender(s_threadSmartConfigBc, zor::kBroadcastChannel, zor::sendVersion5Broadcast,
                     kZorBroadcastSync1Failed);
  }
  if (s_ZorSmart5_McLen > 0) {
    zor::startSender(s_threadSmartConfigMc, zor::kMulticastChannel, zor::sendVersion5Multicast,
                     kZorMulticastSyncFailed);
  }
}
