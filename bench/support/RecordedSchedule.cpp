#include "bench/support/RecordedSchedule.h"

#include <algorithm>

#include "ZOR/facade/CopyText.h"
#include "ZOR/smartconfig/Schedules.h"

namespace zor::bench {
namespace {

/// Writes down what a schedule does, in virtual time.
class RecordingAir final : public Air {
 public:
  bool cancelled() override { return false; }

  std::int32_t send(const char* destination, std::int32_t length) override {
    schedule.frames.push_back({schedule.periodMs, destination, length});
    return length;
  }

  void wait(const ZorTunable& interval) override { schedule.periodMs += std::max<std::int32_t>(interval, 0); }

  RecordedSchedule schedule;
};

}  // namespace

RunInputs makeInputs(const std::string& ssid, const std::string& passPhrase,
                     const std::vector<std::uint8_t>& append) {
  RunInputs inputs{};
  copyText(ssid, inputs.ssid);
  copyText(passPhrase, inputs.password);
  const std::size_t kept = std::min(append.size(), kZorAppendSize - 1);
  std::copy_n(append.begin(), kept, inputs.appendData);
  inputs.appendLen = static_cast<std::int32_t>(kept);
  return inputs;
}

RecordedSchedule recordMulticast(const RunInputs& inputs, bool mixVersion3) {
  RecordingAir air;
  sendMulticastBlock(air, buildPacketV5(inputs), mixVersion3 ? buildPacketV3(inputs) : PacketV3());
  return air.schedule;
}

RecordedSchedule recordBroadcast(const RunInputs& inputs) {
  RecordingAir air;
  sendBroadcastBlock(air, buildPacketV5(inputs));
  return air.schedule;
}

}  // namespace zor::bench
