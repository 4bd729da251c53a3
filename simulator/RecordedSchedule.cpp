#include "simulator/RecordedSchedule.h"

#include <algorithm>

#include "ZOR/smartconfig/Schedules.h"

namespace zor::simulator {
namespace {

/// Records what a schedule sends, in virtual time.
class RecordingAir final : public Air {
 public:
  bool cancelled() override { return false; }

  std::int32_t send(const char* destination, std::int32_t length) override {
    schedule.frames.push_back({schedule.periodMs, destination, length});
    return length;
  }

  void wait(const ZorTunable& interval) override { wait(std::int32_t{interval}); }
  void wait(std::int32_t milliseconds) override { schedule.periodMs += std::max(milliseconds, 0); }

  RecordedSchedule schedule;
};

}  // namespace

RecordedSchedule recordMulticast(const SenderInputs& inputs, bool mixVersion3) {
  RecordingAir air;
  sendMulticastBlock(air, buildPacketV5(inputs), mixVersion3 ? buildPacketV3(inputs) : PacketV3());
  return air.schedule;
}

RecordedSchedule recordBroadcast(const SenderInputs& inputs) {
  RecordingAir air;
  sendBroadcastBlock(air, buildPacketV5(inputs));
  return air.schedule;
}

RecordedSchedule recordVersion3(const SenderInputs& inputs) {
  RecordingAir air;
  sendCycleV3(air, buildPacketV3(inputs), NoSocket::isIgnored);
  return air.schedule;
}

}  // namespace zor::simulator
