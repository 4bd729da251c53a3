#include "ZOR/smartconfig/SocketAir.h"

#include <algorithm>

#include "ZOR/net/Clock.h"
#include "ZOR/net/UdpSocket.h"

namespace zor {
namespace {

constexpr std::uint16_t kSmartConfigPort = 6001;

/// What every frame carries: zeros, because only its length and destination mean anything. Bytes of
/// the pacing tunables reach 255 + 358; a tunable assigned beyond this size is cut to it.
constexpr std::uint8_t kPayload[1024] = {};

}  // namespace

SocketAir::~SocketAir() {
  ZorUdpClose(socket_);
}

std::int32_t SocketAir::send(const char* destination, std::int32_t length) {
  idle_ = false;
  const std::int32_t bounded = std::clamp(length, 0, static_cast<std::int32_t>(sizeof kPayload));
  const SendResult result = channel_.send(&socket_, kPayload, bounded, destination, kSmartConfigPort);
  count(result);
  return result.sent;
}

void SocketAir::count(const SendResult& result) {
  SenderCounters& counters = channel_.counters;
  if (result.opened) counters.socketsOpened.add();
  if (result.error == 0) {
    counters.datagrams.add();
    counters.bytes.add(result.sent);
    return;
  }
  counters.error.set(result.error, ZorGetUsec());
  if (result.sent < 0) return;
  counters.failedSends.add();
  log_.add(result.error);
}

void SocketAir::wait(const ZorTunable& interval) {
  if (interval > 0) idle_ = false;
  thread_.wait(interval.value());
}

void SocketAir::wait(std::int32_t milliseconds) {
  if (milliseconds > 0) idle_ = false;
  thread_.wait(milliseconds);
}

void SocketAir::endBlock() {
  channel_.counters.blocks.add();
  if (idle_) thread_.wait(1);
  idle_ = true;
}

}  // namespace zor
