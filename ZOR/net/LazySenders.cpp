#include "ZOR/net/LazySenders.h"

#include <cerrno>

#include "ZOR/net/Clock.h"
#include "ZOR/net/LazySend.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/platform/Log.h"
#include "ZOR/state/DeviceState.h"

namespace zor {
namespace {

SendResult sendLazily(std::int32_t (*open)(), std::int32_t* descriptor, const void* buffer,
                      std::int32_t length, const char* destinationText, std::uint16_t port) {
  SendResult result;
  if (*descriptor < 0) {
    *descriptor = open();
    result.opened = *descriptor >= 0;
  }
  if (*descriptor < 0) return {-1, errno, false};
  result.sent = ZorUdpSendData(*descriptor, buffer, length, destinationText, port);
  if (result.sent >= 0) return result;
  result = {0, errno, result.opened};
  ZorUdpClose(*descriptor);
  *descriptor = -1;
  return result;
}

/// Passes on what was sent, stamped if it was anything.
SendResult stamp(const SendResult& result) {
  if (result.sent > 0) s_ZorDevice.smartLastMs.store(ZorGetUsec());
  return result;
}

/// Does what the public senders do besides sending.
std::int32_t logAndReturn(const SendResult& result, const char* mark) {
  logFailedSend(result, mark);
  return result.sent;
}

}  // namespace

SendResult sendMulticast(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                         const char* groupText, std::uint16_t port) {
  return stamp(sendLazily(ZorUdpMcInit, descriptor, buffer, length, groupText, port));
}

SendResult sendBroadcast(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                         const char* destinationText, std::uint16_t port) {
  return sendLazily(ZorUdpBcInit, descriptor, buffer, length, destinationText, port);
}

void logFailedSend(const SendResult& result, const char* mark) {
  if (result.sent == 0 && result.error != 0) log("%s)warning %d", mark, static_cast<int>(result.error));
}

}  // namespace zor

std::int32_t ZorUdpBcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                              const char* destinationText, std::uint16_t port) {
  return zor::logAndReturn(zor::sendBroadcast(descriptor, buffer, length, destinationText, port), "b");
}

std::int32_t ZorSmartMcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                const char* groupText, std::uint16_t port) {
  return zor::logAndReturn(zor::sendMulticast(descriptor, buffer, length, groupText, port), "m");
}

std::int32_t ZorSmartBcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                const char* destinationText, std::uint16_t port) {
  return zor::logAndReturn(zor::stamp(zor::sendBroadcast(descriptor, buffer, length, destinationText, port)),
                           "b");
}
