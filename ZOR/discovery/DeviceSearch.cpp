#include <algorithm>
#include <chrono>
#include <cstdio>

#include "ZOR/discovery/ModuleReporter.h"
#include "ZOR/facade/Worker.h"
#include "ZOR/facade/WorkerSlot.h"
#include "ZOR/facade/WorkerState.h"
#include "ZOR/net/Clock.h"
#include "ZOR/net/LazySend.h"
#include "ZOR/net/ReceiveWait.h"
#include "ZOR/net/Stopwatch.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/protocol/RequestFormats.h"
#include "ZOR/state/Tunables.h"

namespace zor {
namespace {

/// The numbered requests of one search and the socket on which the answers come back.
class Requests {
 public:
  Requests() = default;
  ~Requests() { ZorUdpClose(socket_); }
  Requests(const Requests&) = delete;
  Requests& operator=(const Requests&) = delete;

  bool allSent() const { return sent_ >= s_ZorSearchMax; }
  bool isDue() const { return !allSent() && dueInMs() <= 0; }
  /// True when the receive that follows the last request is over as well.
  bool isOver() const { return allSent() && receiveLeftMs() <= 0; }
  std::int32_t socket() const { return socket_; }

  /// How long to wait for an answer now: until the next request, but for one receive at least, and after the
  /// last request for what is left of one.
  std::int32_t waitMs() const {
    const std::int64_t wait = allSent() ? receiveLeftMs() : std::max<std::int64_t>(dueInMs(), kReceiveWaitMs);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(wait, 0, INT32_MAX));
  }

  /// Sends the next request. One that could not be sent counts as well; the next one tries a new socket.
  void send() {
    sinceLatest_.restart();
    char line[64];
    const std::int32_t length = std::snprintf(line, sizeof line, kInfoRequest, sent_);
    count(sendBroadcast(&socket_, line, length, kZorEveryHost, kModulePort));
    receiveEnd_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(kReceiveWaitMs);
    ++sent_;
  }

  /// Drops a socket that has failed; the next request opens another.
  void dropSocket(std::int32_t error) {
    searchCounters.error.set(error, ZorGetUsec());
    if (!isForeign(error)) ZorUdpClose(socket_);
    socket_ = -1;
  }

 private:
  /// Milliseconds until more than the interval has passed, 0 or less when it has.
  std::int64_t dueInMs() const { return std::int64_t{s_ZorSearchInterval} + 1 - sinceLatest_.elapsedMs(); }

  /// Milliseconds, rounded up, until the receive that follows the latest request ends.
  std::int64_t receiveLeftMs() const {
    return std::chrono::ceil<std::chrono::milliseconds>(receiveEnd_ - std::chrono::steady_clock::now())
        .count();
  }

  static void count(const SendResult& result) {
    if (result.opened) searchCounters.socketsOpened.add();
    if (result.error == 0) return searchCounters.requestsSent.add();
    searchCounters.requestsFailed.add();
    searchCounters.error.set(result.error, ZorGetUsec());
    logFailedSend(result, "b");
  }

  std::int32_t socket_ = -1;
  Stopwatch sinceLatest_{0};  ///< The first request is due once the clock has counted an interval.
  std::chrono::steady_clock::time_point receiveEnd_{};
  std::int32_t sent_ = 0;
};

void search(WorkerThread& thread, ModuleReporter& reporter) {
  Requests requests;
  while (!thread.cancelled() && !requests.isOver()) {
    if (requests.isDue()) requests.send();
    if (!thread.waitReadable(requests.socket(), requests.waitMs())) continue;
    const Received received = reporter.receive(requests.socket());
    if (received.error != 0) requests.dropSocket(received.error);
    if (requests.allSent()) break;
  }
}

void runSearch(WorkerThread& thread, const std::shared_ptr<DelegateSlot>& delegateSlot) {
  if (s_ZorSearchMax >= 1) {
    ModuleReporter reporter(kResponseTag, delegateSlot, &ZorSuiteDelegate::onSearchFound,
                            searchCounters.received);
    search(thread, reporter);
  }
  searchCounters.state = endState(thread.cancelReason(), ZorWorkerState::finished);
}

}  // namespace
}  // namespace zor

void ZorSuite::DeviceSearch() {
  zor::WorkerSlot::of(s_threadDeviceSearch).cancel(zor::CancelReason::replaced);
  s_threadDeviceSearch.waitUntilEmpty();
  zor::searchCounters.reset(ZorWorkerState::running);
  const bool started =
      zor::Worker::start(s_threadDeviceSearch, zor::WorkerKind{"zor-search", true, zor::searchCounters.state},
                         [slot = delegateSlot_](zor::WorkerThread& thread) { zor::runSearch(thread, slot); });
  if (!started) zor::searchCounters.state = ZorWorkerState::noThread;
}

void ZorSuite::DeviceSearchSetProperty(std::int32_t interval, std::int32_t COUNT) {
  s_ZorSearchInterval = interval;
  s_ZorSearchMax = COUNT;
}

ZorSearchReport ZorSuite::DeviceSearchReport() {
  return zor::searchCounters.report();
}
