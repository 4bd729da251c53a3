#include "ZOR/facade/SmartConfigStatus.h"
#include "ZOR/facade/Worker.h"
#include "ZOR/net/LazySenders.h"
#include "ZOR/platform/Log.h"
#include "ZOR/smartconfig/Schedules.h"
#include "ZOR/smartconfig/SenderRun.h"

void ZorSuite::SmartConfigV3_Start(std::string_view SSID, std::string_view PASSWORD, std::int32_t TIMEOUT) {
  if (SmartConfigOnlineListen(kZorAnnouncementPort) < 0) {
    zor::log("listen smart3 failed");
    return;
  }
  s_threadSmartConfigMc.cancel();
  s_threadSmartConfigMc.waitUntilEmpty();

  zor::storeSmartConfigInputs(SSID, PASSWORD, TIMEOUT);
  if (!startWorker(s_threadSmartConfigMc, &ZorSuite::threadSmartConfigV3)) {
    s_ZorDevice.smartStatus = kZorMulticastSyncFailed;
  }
}

void ZorSuite::threadSmartConfigV3() {
  if (worker_ == nullptr) return;
  const zor::RunInputs& inputs = worker_->inputs();
  zor::log("start smart v3, ssid=%s, pass=%s", inputs.ssid, inputs.password);
  const zor::PacketV3 packet = zor::buildPacketV3(inputs);

  zor::SocketAir air(worker_->thread(), ZorSmartMcSendData);
  zor::sendUntilTimeout(air, [&] {
    zor::sendCycleV3(air, packet, zor::NoSocket::goesOn);
    return 0;
  });
  if (!air.cancelled()) s_threadSmartOnlineListen.cancel();
}
