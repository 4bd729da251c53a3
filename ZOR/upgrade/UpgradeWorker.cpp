#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "ZOR/facade/SuiteInterface.h"
#include "ZOR/facade/Worker.h"
#include "ZOR/net/Clock.h"
#include "ZOR/net/Receive.h"
#include "ZOR/net/ReceiveWait.h"
#include "ZOR/net/Stopwatch.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/protocol/RequestFormats.h"
#include "ZOR/state/CopyText.h"
#include "ZOR/state/Counters.h"
#include "ZOR/state/DeviceState.h"
#include "ZOR/upgrade/UpgradeAnswer.h"
#include "ZOR/upgrade/UpgradeCommand.h"
#include "ZOR/upgrade/UpgradeStatus.h"

namespace zor {
namespace {

constexpr std::int64_t kRequestIntervalMs = 501;
constexpr std::int64_t kSilenceLimitMs = 10'000;
constexpr std::int32_t kMaxAnswerLength = 512;

/// A final status is a negative one or one of at least `kZorUpgradeDone`.
bool isFinal(std::int32_t status) {
  return static_cast<std::uint32_t>(status) >= kZorUpgradeDone;
}

/// Opens a socket on a port of the system's choice. Returns it, or `ZorUdpInit`'s negative result.
std::int32_t openSocket() {
  const std::int32_t socket = ZorUdpInit(0);
  if (socket < 0) upgradeCounters.error.set(errno, ZorGetUsec());
  if (socket >= 0) upgradeCounters.socketsOpened.add();
  return socket;
}

/// The status of an upgrade whose socket could not be opened; `result` is `ZorUdpInit`'s.
std::int32_t statusWithoutSocket(std::int32_t result) {
  return result == kZorNoSocket ? kZorUpgradeNoSocket : kZorUpgradeBindFailed;
}

/// One upgrade on its worker's thread: asks, listens, and keeps the status.
class Upgrade {
 public:
  /// Takes `socket` over.
  Upgrade(WorkerThread& thread, const char* moduleIp, const char* commandData, std::int32_t socket)
      : thread_(thread), moduleIp_(moduleIp), socket_(socket), sinceAnswered_(ZorGetUsec()) {
    std::snprintf(command_, sizeof command_, kUpgradeRequest, commandData);
  }
  ~Upgrade() { ZorUdpClose(socket_); }
  Upgrade(const Upgrade&) = delete;
  Upgrade& operator=(const Upgrade&) = delete;

  /// Returns how it ended; the status says why.
  ZorWorkerState run() {
    do {
      if (sinceAsked_.elapsedMs() >= kRequestIntervalMs) ask();
      if (!isFinal(status_) && thread_.waitReadable(socket_, nextLookMs())) listen();
      if (sinceAnswered_.elapsedMs() > kSilenceLimitMs) status_ = kZorUpgradeSilence;
    } while (!isFinal(status_));
    return socket_ >= 0 ? ZorWorkerState::finished : ZorWorkerState::noSocket;
  }

 private:
  /// Milliseconds until there is a request to send or the silence has lasted too long.
  std::int32_t nextLookMs() const {
    const std::int64_t request = kRequestIntervalMs - sinceAsked_.elapsedMs();
    const std::int64_t silence = kSilenceLimitMs + 1 - sinceAnswered_.elapsedMs();
    return static_cast<std::int32_t>(std::max<std::int64_t>(std::min(request, silence), 0));
  }

  void ask() {
    const char* const line = status_ == kZorUpgradeCommandSent ? command_ : kUpgradeStatusRequest;
    const auto length = static_cast<std::int32_t>(std::strlen(line));
    sinceAsked_.restart();
    if (ZorUdpSendData(socket_, line, length, moduleIp_, kModulePort) >= 0) {
      upgradeCounters.requestsSent.add();
      return;
    }
    // The next request makes up for it, or the upgrade ends in silence.
    const std::int32_t error = errno;
    upgradeCounters.requestsFailed.add();
    upgradeCounters.error.set(error, ZorGetUsec());
    if (error == EPIPE || error == ENOTCONN) reopen(error);  // The system has taken the socket away.
  }

  void listen() {
    char source[kZorIpSize];
    std::uint32_t port = 0;
    const Received received = receiveNow(socket_, line_, kMaxAnswerLength, source, &port);
    if (received.error != 0) {
      upgradeCounters.error.set(received.error, ZorGetUsec());
      reopen(received.error);
      thread_.wait(kReceiveWaitMs);  // An error that stays must not make the worker spin.
    }
    if (received.length < 0) return;
    upgradeCounters.datagrams.add();
    if (received.length == 0) return upgradeCounters.notAResponse.add();
    if (std::strcmp(source, moduleIp_) != 0) return upgradeCounters.otherAddress.add();
    if (port != kModulePort) return upgradeCounters.otherPort.add();
    if (!answer_.open(line_, received.length)) return upgradeCounters.notAResponse.add();
    upgradeCounters.answers.add();
    sinceAnswered_.restart();
    status_ = answer_.applyTo(status_);
  }

  /// Replaces a socket that has failed: systems take those of a suspended application away. Without another
  /// the upgrade ends.
  void reopen(std::int32_t error) {
    if (!isForeign(error)) ZorUdpClose(socket_);
    socket_ = openSocket();
    if (socket_ < 0) status_ = statusWithoutSocket(socket_);
  }

  WorkerThread& thread_;
  const char* moduleIp_;
  std::int32_t socket_;
  std::atomic<std::int32_t>& status_ = s_ZorDevice.upgradeStatus;
  Stopwatch sinceAsked_{0};  ///< The first request is due once the clock has counted an interval.
  Stopwatch sinceAnswered_;
  char command_[kZorUpgradeCmdDataSize + sizeof kUpgradeRequest];
  char line_[kMaxAnswerLength + 1];
  UpgradeAnswer answer_;
};

/// What one upgrade asks for: copied by the start, on the application's thread.
struct UpgradeInputs {
  char moduleIp[kZorIpSize];
  char url[kZorUpgradeUrlSize];
};

UpgradeInputs copyUpgradeInputs() {
  UpgradeInputs inputs;
  std::memcpy(inputs.moduleIp, s_ZorDevice.upgradeIp, sizeof inputs.moduleIp);
  std::memcpy(inputs.url, s_ZorDevice.upgradeUrl, sizeof inputs.url);
  return inputs;
}

ZorWorkerState upgrade(WorkerThread& thread, const UpgradeInputs& inputs) {
  s_ZorDevice.upgradeStatus = kZorUpgradeCommandSent;
  char commandData[kZorUpgradeCmdDataSize];
  if (const std::int32_t result = ZorBuildUpgradeCmdData(inputs.url, commandData); result < 0) {
    s_ZorDevice.upgradeStatus = result == kZorUrlNotHttp ? kZorUpgradeNotHttp : kZorUpgradeUrlRefused;
    return ZorWorkerState::finished;
  }
  const std::int32_t socket = openSocket();
  if (socket < 0) {
    s_ZorDevice.upgradeStatus = statusWithoutSocket(socket);
    return ZorWorkerState::noSocket;
  }
  return Upgrade(thread, inputs.moduleIp, commandData, socket).run();
}

}  // namespace
}  // namespace zor

void ZorSuite::DeviceUpgrade(std::string_view IP, std::string_view URL) {
  s_threadUpgrade.waitUntilEmpty();
  zor::copyText(IP, s_ZorDevice.upgradeIp);
  zor::copyText(URL, s_ZorDevice.upgradeUrl);
  s_ZorDevice.upgradeStartMs = ZorGetUsec();
  s_ZorDevice.upgradeStatus = kZorUpgradeRequested;
  zor::upgradeCounters.reset(ZorWorkerState::running);
  const bool started =
      zor::Worker::start(s_threadUpgrade, zor::WorkerKind{"zor-upgrade", true, zor::upgradeCounters.state},
                         [inputs = zor::copyUpgradeInputs()](zor::WorkerThread& thread) {
                           zor::upgradeCounters.state = zor::upgrade(thread, inputs);
                         });
  if (started) return;
  zor::upgradeCounters.state = ZorWorkerState::noThread;
  s_ZorDevice.upgradeStatus = kZorUpgradeNoSocket;
}

ZorUpgradeReport ZorSuite::DeviceUpgradeReport() {
  return zor::upgradeCounters.report();
}

std::int32_t ZorSuite::DeviceUpgradeProgress() {
  return s_ZorDevice.upgradeStatus;
}
