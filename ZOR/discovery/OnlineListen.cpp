#include <cerrno>

#include "ZOR/discovery/ModuleReporter.h"
#include "ZOR/facade/RunListener.h"
#include "ZOR/facade/Worker.h"
#include "ZOR/facade/WorkerSlot.h"
#include "ZOR/facade/WorkerState.h"
#include "ZOR/net/Clock.h"
#include "ZOR/net/ReceiveWait.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/state/AnnouncementPort.h"
#include "ZOR/state/DeviceState.h"

namespace zor {
namespace {

constexpr std::int32_t kLastPort = 65535;

/// Binds the listener's socket to `port`. Returns the descriptor, or `ZorUdpInit`'s negative result.
std::int32_t bindPort(std::int32_t port) {
  const std::int32_t socket = ZorUdpInit(port);
  if (socket < 0) listenerCounters.error.set(errno, ZorGetUsec());
  if (socket >= 0) listenerCounters.socketsOpened.add();
  s_ZorDevice.listenSocket = socket;
  return socket;
}

/// Binds the first free port from `kZorAnnouncementPort` up. Returns it, or -1 when there is none or when no
/// socket can be created at all.
std::int32_t bindFreePort() {
  for (std::int32_t port = kZorAnnouncementPort; port <= kLastPort; ++port) {
    const std::int32_t socket = bindPort(port);
    if (socket >= 0) return port;
    if (socket == kZorNoSocket) break;
  }
  return -1;
}

/// Opens a socket that has failed again on its port: systems take the sockets of a suspended application
/// away.
bool reopen(std::int32_t port, std::int32_t error) {
  listenerCounters.error.set(error, ZorGetUsec());
  const std::int32_t failed = s_ZorDevice.listenSocket.exchange(-1);
  if (!isForeign(error)) ZorUdpClose(failed);
  return bindPort(port) >= 0;
}

/// Closes the listener's socket on every way out of its thread: the application's main loop, to which it
/// posts, may call `pthread_exit` there.
struct SocketCloser {
  ~SocketCloser() { ZorUdpClose(s_ZorDevice.listenSocket); }
};

/// Listens until it is cancelled. Returns false when the socket failed and its port could not be opened
/// again.
bool listen(WorkerThread& thread, ModuleReporter& reporter, std::int32_t port) {
  const SocketCloser closer;
  while (!thread.cancelled()) {
    thread.waitReadable(s_ZorDevice.listenSocket, -1);
    // Also when it says that nothing is there: a wait that fails must not leave the listener deaf.
    const Received received = reporter.receive(s_ZorDevice.listenSocket);
    if (received.error == 0) continue;
    if (!reopen(port, received.error)) return false;
    thread.wait(kReceiveWaitMs);  // An error that stays must not make the worker spin.
  }
  return true;
}

void runListener(WorkerThread& thread, const std::shared_ptr<DelegateSlot>& delegateSlot, std::int32_t port) {
  ModuleReporter reporter(kNotificationTag, delegateSlot, &ZorSuiteDelegate::onSmartFound,
                          listenerCounters.received);
  const bool hadSocket = listen(thread, reporter, port);
  listenerCounters.state =
      hadSocket ? endState(thread.cancelReason(), ZorWorkerState::finished) : ZorWorkerState::noSocket;
}

}  // namespace
}  // namespace zor

std::int32_t ZorSuite::SmartConfigOnlineListen(std::int32_t port) {
  zor::WorkerSlot::of(s_threadSmartOnlineListen).cancel(zor::CancelReason::replaced);
  s_threadSmartOnlineListen.waitUntilEmpty();

  zor::listenerCounters.reset(ZorWorkerState::noSocket);
  // 65535 asks for a free port too: it is kept out of the ports that can be asked for.
  const bool isExplicit = port >= 1 && port < zor::kLastPort;
  if (isExplicit && zor::bindPort(port) < 0) return -1;
  const std::int32_t bound = isExplicit ? port : zor::bindFreePort();
  if (bound < 0) return -1;

  zor::listenerCounters.port = bound;
  zor::listenerCounters.state = ZorWorkerState::running;
  const bool started = zor::Worker::start(
      s_threadSmartOnlineListen, zor::WorkerKind{"zor-listen", true, zor::listenerCounters.state},
      [slot = delegateSlot_, bound](zor::WorkerThread& thread) { zor::runListener(thread, slot, bound); });
  if (!started) {
    ZorUdpClose(s_ZorDevice.listenSocket.exchange(-1));
    zor::listenerCounters.state = ZorWorkerState::noThread;
    return -1;
  }
  zor::noteListenerOpened();
  return bound;
}
