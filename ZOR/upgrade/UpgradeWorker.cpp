#include <atomic>
#include <cstdio>
#include <cstring>

#include "ZOR/facade/CopyText.h"
#include "ZOR/facade/Worker.h"
#include "ZOR/net/Clock.h"
#include "ZOR/net/ReceiveWait.h"
#include "ZOR/net/Stopwatch.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/protocol/RequestFormats.h"
#include "ZOR/upgrade/UpgradeAnswer.h"
#include "ZOR/upgrade/UpgradeCommand.h"
#include "ZOR/upgrade/UpgradeStatus.h"

namespace zor {
namespace {

constexpr std::int64_t kRequestIntervalMs = 501;
constexpr std::int64_t kSilenceLimitMs = 10'000;
constexpr std::int32_t kLongestAnswer = 512;

/// A final status is a negative one or one of at least `kZorUpgradeDone`.
bool isFinal(std::int32_t status) {
  return static_cast<std::uint32_t>(status) >= kZorUpgradeDone;
}

/// One upgrade on its worker's thread: asks, listens, and keeps the status.
class Upgrade {
 public:
  Upgrade(WorkerThread& thread, const char* moduleIp, const char* commandData, std::int32_t socket)
      : thread_(thread), moduleIp_(moduleIp), socket_(socket), sinceAnswered_(ZorGetUsec()) {
    std::snprintf(command_, sizeof command_, kUpgradeRequest, commandData);
  }
  ~Upgrade() { ZorUdpClose(socket_); }
  Upgrade(const Upgrade&) = delete;
  Upgrade& operator=(const Upgrade&) = delete;

  void run() {
    do {
      askIfDue();
      listen();
      if (sinceAnswered_.elapsedMs() > kSilenceLimitMs) status_ = kZorUpgradeSilence;
    } while (!isFinal(status_));
  }

 private:
  void askIfDue() {
    if (sinceAsked_.elapsedMs() < kRequestIntervalMs) return;
    const char* const line = status_ == kZorUpgradeCommandSent ? command_ : kUpgradeStatusRequest;
    sinceAsked_.restart();
    // A send that fails is made good by the next, or ends in silence.
    ZorUdpSendData(socket_, line, static_cast<std::int32_t>(std::strlen(line)), moduleIp_, kModulePort);
  }

  void listen() {
    char source[kZorIpSize];
    std::uint32_t port = 0;
    const std::int32_t length = ZorUdpRecvData(socket_, line_, kLongestAnswer, source, &port);
    if (length < 0) thread_.wait(kReceiveWaitMs);
    if (length < 1 || port != kModulePort || std::strcmp(source, moduleIp_) != 0) return;
    if (!answer_.open(line_, length)) return;
    sinceAnswered_.restart();
    status_ = answer_.applyTo(status_);
  }

  WorkerThread& thread_;
  const char* moduleIp_;
  std::int32_t socket_;
  std::atomic<std::int32_t>& status_ = s_ZorDevice.upgradeStatus;
  Stopwatch sinceAsked_{0};  ///< The first request is due once the clock has counted an interval.
  Stopwatch sinceAnswered_;
  char command_[kZorUpgradeCmdDataSize + sizeof kUpgradeRequest];
  char line_[kLongestAnswer + 1];
  UpgradeAnswer answer_;
};

}  // namespace
}  // namespace zor

void ZorSuite::DeviceUpgrade(std::string_view IP, std::string_view URL) {
  s_threadUpgrade.waitUntilEmpty();
  zor::copyText(IP, s_ZorDevice.upgradeIp);
  zor::copyText(URL, s_ZorDevice.upgradeUrl);
  s_ZorDevice.upgradeStartMs = ZorGetUsec();
  s_ZorDevice.upgradeStatus = kZorUpgradeRequested;
  if (!startWorker(s_threadUpgrade, &ZorSuite::threadUpgrade))
    s_ZorDevice.upgradeStatus = kZorUpgradeNoSocket;
}

std::int32_t ZorSuite::DeviceUpgradeProgress() {
  return s_ZorDevice.upgradeStatus;
}

void ZorSuite::threadUpgrade() {
  if (worker_ == nullptr) return;
  s_ZorDevice.upgradeStatus = kZorUpgradeCommandSent;
  const zor::RunInputs& inputs = worker_->inputs();
  char commandData[kZorUpgradeCmdDataSize];
  if (const std::int32_t result = ZorBuildUpgradeCmdData(inputs.upgradeUrl, commandData); result < 0) {
    s_ZorDevice.upgradeStatus = result == kZorUrlNotHttp ? kZorUpgradeNotHttp : kZorUpgradeUrlRefused;
    return;
  }
  const std::int32_t socket = ZorUdpInit(0);
  if (socket < 0) {
    s_ZorDevice.upgradeStatus = socket == kZorNoSocket ? kZorUpgradeNoSocket : kZorUpgradeBindFailed;
    return;
  }
  zor::Upgrade(worker_->thread(), inputs.upgradeIp, commandData, socket).run();
}
