#include "ZOR/discovery/ModuleReporter.h"
#include "ZOR/facade/Worker.h"
#include "ZOR/net/ReceiveWait.h"
#include "ZOR/net/UdpSocket.h"

namespace {

constexpr std::int32_t kLastPort = 65535;

/// Binds the first free port from `kZorAnnouncementPort` up. Returns it, or -1 when there is none or when no
/// socket can be created at all.
std::int32_t bindFreePort() {
  for (std::int32_t port = kZorAnnouncementPort; port <= kLastPort; ++port) {
    const std::int32_t socket = ZorUdpInit(port);
    s_ZorDevice.listenSocket = socket;
    if (socket >= 0) return port;
    if (socket == kZorNoSocket) break;
  }
  return -1;
}

std::int32_t bindPort(std::int32_t port) {
  s_ZorDevice.listenSocket = ZorUdpInit(port);
  return s_ZorDevice.listenSocket >= 0 ? port : -1;
}

}  // namespace

std::int32_t ZorSuite::SmartConfigOnlineListen(std::int32_t port) {
  s_threadSmartOnlineListen.cancel();
  s_threadSmartOnlineListen.waitUntilEmpty();

  // 65535 asks for a free port too: it is kept out of the ports that can be asked for.
  const bool explicitPort = port >= 1 && port < kLastPort;
  const std::int32_t bound = explicitPort ? bindPort(port) : bindFreePort();
  if (bound < 0) return -1;
  if (startWorker(s_threadSmartOnlineListen, &ZorSuite::threadSmartOnlineListen)) return bound;
  ZorUdpClose(s_ZorDevice.listenSocket.exchange(-1));
  return -1;
}

void ZorSuite::threadSmartOnlineListen() {
  if (worker_ == nullptr) return;
  zor::WorkerThread& thread = worker_->thread();
  zor::ModuleReporter reporter(zor::kNotificationTag, delegateSlot_, &ZorSuiteDelegate::onSmartFound);
  while (!thread.cancelled()) {
    if (reporter.receive(s_ZorDevice.listenSocket) < 0) thread.wait(zor::kReceiveWaitMs);
  }
  ZorUdpClose(s_ZorDevice.listenSocket);
}
