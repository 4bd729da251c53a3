#include "bench/support/SleepingRun.h"

#include <chrono>

#include "ZOR/net/LazySenders.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/protocol/LineReader.h"
#include "ZOR/smartconfig/Schedules.h"
#include "bench/support/SampleRun.h"

namespace zor::bench {
namespace {

using Sender = decltype(&ZorUdpBcSendData);

class SleepingAir final : public Air {
 public:
  SleepingAir(const std::atomic<bool>& isCancelled, Sender sender, Sleeps sleeps)
      : isCancelled_(isCancelled), sender_(sender), sleeps_(sleeps) {}
  ~SleepingAir() override { ZorUdpClose(socket_); }

  bool cancelled() override { return isCancelled_; }

  std::int32_t send(const char* destination, std::int32_t length) override {
    return sender_(&socket_, payload_, length, destination, kSmartConfigPort);
  }

  void wait(const ZorTunable& interval) override { wait(std::int32_t{interval}); }

  void wait(std::int32_t milliseconds) override {
    if (milliseconds <= 0) return;
    const std::int32_t step = sleeps_ == Sleeps::counted ? 1 : milliseconds;
    for (std::int32_t passed = 0; passed < milliseconds && !isCancelled_; passed += step) {
      std::this_thread::sleep_for(std::chrono::milliseconds(step));
    }
  }

 private:
  const std::atomic<bool>& isCancelled_;
  Sender sender_;
  Sleeps sleeps_;
  std::int32_t socket_ = -1;
  std::uint8_t payload_[1024] = {};
};

}  // namespace

SleepingRun::SleepingRun(const SenderInputs& inputs, Sleeps sleeps) {
  const PacketV5 packet = buildPacketV5(inputs);
  broadcast_ = std::thread([this, packet, sleeps] {
    SleepingAir air(cancelled_, ZorUdpBcSendData, sleeps);
    while (!cancelled_) sendBroadcastBlock(air, packet);
    broadcastRunning_ = false;
  });
  multicast_ = std::thread([this, packet, sleeps] {
    SleepingAir air(cancelled_, ZorSmartMcSendData, sleeps);
    while (!cancelled_) sendMulticastBlock(air, packet, PacketV3());
    multicastRunning_ = false;
  });
}

SleepingRun::~SleepingRun() {
  cancel();
  broadcast_.join();
  multicast_.join();
}

ReceiveLoop::ReceiveLoop(std::int32_t port) : descriptor_(ZorUdpInit(port)) {
  thread_ = std::thread([this] {
    char line[kMaxLineLength + 1];
    char source[kZorIpSize];
    while (!cancelled_) ZorUdpRecvData(descriptor_, line, kMaxLineLength, source, nullptr);
    running_ = false;
  });
}

ReceiveLoop::~ReceiveLoop() {
  cancel();
  thread_.join();
  ZorUdpClose(descriptor_);
}

}  // namespace zor::bench
