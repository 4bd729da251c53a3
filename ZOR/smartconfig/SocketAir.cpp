#include "ZOR/smartconfig/SocketAir.h"

#include <algorithm>

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
  return sender_(&socket_, kPayload, bounded, destination, kSmartConfigPort);
}

void SocketAir::wait(const ZorTunable& interval) {
  if (interval > 0) idle_ = false;
  thread_.wait(interval.value());
}

void SocketAir::restIfIdle() {
  if (idle_) thread_.wait(1);
  idle_ = true;
}

}  // namespace zor
