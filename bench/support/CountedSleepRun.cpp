#include "bench/support/CountedSleepRun.h"

#include <unistd.h>

#include "ZOR/net/LazySenders.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/protocol/LineReader.h"
#include "ZOR/smartconfig/Schedules.h"
#include "bench/support/SampleRun.h"

namespace zor::bench {
namespace {

using Sender = decltype(&ZorUdpBcSendData);

class CountedSleepAir final : public Air {
 public:
  CountedSleepAir(const std::atomic<bool>& isCancelled, Sender sender)
      : isCancelled_(isCancelled), sender_(sender) {}
  ~CountedSleepAir() override { ZorUdpClose(socket_); }

  bool cancelled() override { return isCancelled_; }

  std::int32_t send(const char* destination, std::int32_t length) override {
    return sender_(&socket_, payload_, length, destination, kSmartConfigPort);
  }

  void wait(const ZorTunable& interval) override {
    for (std::int32_t passed = 0; passed < interval && !isCancelled_; ++passed) usleep(1000);
  }
  void wait(std::int32_t milliseconds) override { wait(ZorTunable(milliseconds)); }

 private:
  const std::atomic<bool>& isCancelled_;
  Sender sender_;
  std::int32_t socket_ = -1;
  std::uint8_t payload_[1024] = {};
};

}  // namespace

CountedSleepRun::CountedSleepRun(const SenderInputs& inputs) {
  const PacketV5 packet = buildPacketV5(inputs);
  broadcast_ = std::thread([this, packet] {
    CountedSleepAir air(cancelled_, ZorUdpBcSendData);
    while (!cancelled_) sendBroadcastBlock(air, packet);
    broadcastRunning_ = false;
  });
  multicast_ = std::thread([this, packet] {
    CountedSleepAir air(cancelled_, ZorSmartMcSendData);
    while (!cancelled_) sendMulticastBlock(air, packet, PacketV3());
    multicastRunning_ = false;
  });
}

CountedSleepRun::~CountedSleepRun() {
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
