#include "ZOR/facade/Worker.h"
#include "ZOR/net/LazySenders.h"
#include "ZOR/platform/Log.h"
#include "ZOR/smartconfig/Schedules.h"
#include "ZOR/smartconfig/SenderRun.h"

void ZorSuite::threadSmartConfigV5_mc() {
  if (worker_ == nullptr) return;
  const zor::RunInputs& inputs = worker_->inputs();
  zor::log("start smart v5, ssid=%s, pass=%s, append %d byte", inputs.ssid, inputs.password,
           static_cast<int>(inputs.appendLen));
  const zor::PacketV5 packet = zor::buildPacketV5(inputs);
  const zor::PacketV3 mixed = s_ZorSmart5_MixV3 == 1 ? zor::buildPacketV3(inputs) : zor::PacketV3();

  zor::SocketAir air(worker_->thread(), ZorSmartMcSendData);
  const std::int32_t status =
      zor::sendUntilTimeout(air, [&] { return zor::sendMulticastBlock(air, packet, mixed); });
  if (status < 0) {
    s_ZorDevice.smartStatus = status;
  } else if (!air.cancelled()) {
    // The listener ends with a run that timed out. A stop has told it itself, and a run that was
    // replaced leaves it to the next.
    s_threadSmartOnlineListen.cancel();
  }
}

void ZorSuite::threadSmartConfigV5_bc() {
  if (worker_ == nullptr) return;
  const zor::PacketV5 packet = zor::buildPacketV5(worker_->inputs());
  zor::SocketAir air(worker_->thread(), ZorUdpBcSendData);
  const std::int32_t status =
      zor::sendUntilTimeout(air, [&] { return zor::sendBroadcastBlock(air, packet); });
  if (status < 0) s_ZorDevice.smartStatus = status;
}
