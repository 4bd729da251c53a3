#include "ZOR/facade/RunListener.h"
#include "ZOR/facade/SuiteInterface.h"
#include "ZOR/facade/WorkerSlot.h"
#include "ZOR/platform/Log.h"
#include "ZOR/smartconfig/Schedules.h"
#include "ZOR/smartconfig/SenderRun.h"
#include "ZOR/state/AnnouncementPort.h"
#include "ZOR/state/SmartConfigStatus.h"

namespace zor {
namespace {

std::int32_t sendVersion3(SocketAir& air, const SenderInputs& inputs) {
  log("start smart v3, ssid=%s, pass=%s", inputs.ssid, inputs.password);
  const PacketV3 packet = buildPacketV3(inputs);
  sendUntilTimeout(air, [&] {
    sendCycleV3(air, packet, NoSocket::isIgnored);
    if (!air.cancelled()) air.endCycle();
    return 0;
  });
  if (!air.cancelled()) endListenerOfRun();
  return 0;
}

}  // namespace
}  // namespace zor

void ZorSuite::SmartConfigV3_Start(std::string_view SSID, std::string_view PASSWORD, std::int32_t TIMEOUT) {
  const zor::ListenerOfNextRun belongsToThisOne;
  if (SmartConfigOnlineListen(kZorAnnouncementPort) < 0) {
    zor::log("listen smart3 failed");
    return;
  }
  zor::WorkerSlot::of(s_threadSmartConfigMc).cancel(zor::CancelReason::replaced);
  s_threadSmartConfigMc.waitUntilEmpty();

  zor::storeSmartConfigInputs(SSID, PASSWORD, TIMEOUT);
  zor::startSender(s_threadSmartConfigMc, zor::kMulticastChannel, zor::sendVersion3, kZorMulticastSyncFailed);
}
