#include "ZOR/net/LazySenders.h"

#include <cerrno>

#include "ZOR/facade/DeviceState.h"
#include "ZOR/net/Clock.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/platform/Log.h"

namespace {

/// What one channel does its own way.
struct Channel {
  std::int32_t (*open)();
  const char* mark;  ///< What its warning begins with.
};

constexpr Channel kMulticast{ZorUdpMcInit, "m"};
constexpr Channel kBroadcast{ZorUdpBcInit, "b"};

std::int32_t sendLazily(const Channel& channel, std::int32_t* descriptor, const void* buffer,
                        std::int32_t length, const char* destinationText, std::uint16_t port) {
  if (*descriptor < 0) *descriptor = channel.open();
  if (*descriptor < 0) return -1;
  const std::int32_t sent = ZorUdpSendData(*descriptor, buffer, length, destinationText, port);
  if (sent >= 0) return sent;
  zor::log("%s)warning %d", channel.mark, errno);
  ZorUdpClose(*descriptor);
  *descriptor = -1;
  return 0;
}

/// Passes on what was sent, stamped if it was anything.
std::int32_t stamp(std::int32_t sent) {
  if (sent > 0) s_ZorDevice.smartLastMs.store(ZorGetUsec());
  return sent;
}

}  // namespace

std::int32_t ZorUdpBcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                              const char* destinationText, std::uint16_t port) {
  return sendLazily(kBroadcast, descriptor, buffer, length, destinationText, port);
}

std::int32_t ZorSmartMcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                const char* groupText, std::uint16_t port) {
  return stamp(sendLazily(kMulticast, descriptor, buffer, length, groupText, port));
}

std::int32_t ZorSmartBcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                const char* destinationText, std::uint16_t port) {
  return stamp(sendLazily(kBroadcast, descriptor, buffer, length, destinationText, port));
}
