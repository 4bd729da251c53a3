#include <cstdio>

#include "ZOR/discovery/ModuleReporter.h"
#include "ZOR/facade/Tunables.h"
#include "ZOR/facade/Worker.h"
#include "ZOR/net/LazySenders.h"
#include "ZOR/net/ReceiveWait.h"
#include "ZOR/net/Stopwatch.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/protocol/RequestFormats.h"

namespace {

/// The numbered requests of one search and the socket on which the answers come back.
class Requests {
 public:
  Requests() = default;
  ~Requests() { ZorUdpClose(socket_); }
  Requests(const Requests&) = delete;
  Requests& operator=(const Requests&) = delete;

  bool allSent() const { return sent_ >= s_ZorSearchMax; }
  std::int32_t socket() const { return socket_; }

  /// Sends the next request if more than the interval has passed since the latest. A request that
  /// could not be sent counts as well; the next one tries a new socket.
  void sendIfDue() {
    if (sinceLatest_.elapsedMs() <= s_ZorSearchInterval) return;
    sinceLatest_.restart();
    char line[64];
    const std::int32_t length = std::snprintf(line, sizeof line, zor::kInfoRequest, sent_);
    ZorUdpBcSendData(&socket_, line, length, kZorEveryHost, zor::kModulePort);
    ++sent_;
  }

 private:
  std::int32_t socket_ = -1;
  zor::Stopwatch sinceLatest_{0};  ///< The first request is due once the clock has counted an interval.
  std::int32_t sent_ = 0;
};

}  // namespace

void ZorSuite::DeviceSearch() {
  s_threadDeviceSearch.cancel();
  s_threadDeviceSearch.waitUntilEmpty();
  // A search that finds no thread ends as it would without an answer: nobody is reported.
  static_cast<void>(startWorker(s_threadDeviceSearch, &ZorSuite::threadDeviceSearch));
}

void ZorSuite::DeviceSearchSetProperty(std::int32_t interval, std::int32_t COUNT) {
  s_ZorSearchInterval = interval;
  s_ZorSearchMax = COUNT;
}

void ZorSuite::threadDeviceSearch() {
  if (worker_ == nullptr || s_ZorSearchMax < 1) return;
  zor::WorkerThread& thread = worker_->thread();
  zor::ModuleReporter reporter(zor::kResponseTag, delegateSlot_, &ZorSuiteDelegate::onSearchFound);
  Requests requests;
  while (!thread.cancelled()) {
    requests.sendIfDue();
    if (reporter.receive(requests.socket()) < 0 || requests.socket() < 0) thread.wait(zor::kReceiveWaitMs);
    if (requests.allSent()) break;
  }
}
