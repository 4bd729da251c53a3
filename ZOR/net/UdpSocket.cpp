#include "ZOR/net/UdpSocket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "ZOR/net/ReceiveWait.h"

namespace {

std::int32_t openSocket() {
#if defined(SOCK_CLOEXEC)
  return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
#else
  const std::int32_t descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  if (descriptor >= 0) fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  return descriptor;
#endif
}

sockaddr_in makeAddress(in_addr_t address, std::uint16_t port) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(port);
  result.sin_addr.s_addr = address;
  return result;
}

bool bindToAnyAddress(std::int32_t descriptor, std::uint16_t port) {
  const sockaddr_in local = makeAddress(htonl(INADDR_ANY), port);
  return bind(descriptor, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0;
}

/// Closes what could not be set up; `code` tells what failed.
std::int32_t giveUp(std::int32_t descriptor, std::int32_t code) {
  ZorUdpClose(descriptor);
  return code;
}

std::int32_t openSender() {
  const std::int32_t descriptor = openSocket();
  if (descriptor < 0) return kZorNoSocket;
  const std::int32_t on = 1;
  if (setsockopt(descriptor, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0) {
    return giveUp(descriptor, kZorOptionFailed);
  }
  if (!bindToAnyAddress(descriptor, 0)) return giveUp(descriptor, kZorSenderBindFailed);
  return descriptor;
}

/// 1 when a receive would find something, an error included; 0 after the wait; negative on failure.
std::int32_t waitUntilReadable(std::int32_t descriptor) {
  pollfd wanted{descriptor, POLLIN, 0};
  const int ready = poll(&wanted, 1, zor::kReceiveWaitMs);
  if (ready <= 0) return ready;
  if ((wanted.revents & POLLNVAL) == 0) return 1;
  errno = EBADF;
  return -1;
}

}  // namespace

std::int32_t ZorUdpInit(std::int32_t port) {
  const std::int32_t descriptor = openSocket();
  if (descriptor < 0) return kZorNoSocket;
  if (!bindToAnyAddress(descriptor, static_cast<std::uint16_t>(port))) {
    return giveUp(descriptor, kZorBindFailed);
  }
  return descriptor;
}

std::int32_t ZorUdpMcInit() {
  return openSender();
}

std::int32_t ZorUdpBcInit() {
  return openSender();
}

void ZorUdpClose(std::int32_t descriptor) {
  if (descriptor >= 0) close(descriptor);
}

std::int32_t ZorUdpRecvData(std::int32_t descriptor, void* buffer, std::int32_t length, char* sourceText,
                            std::uint32_t* sourcePort) {
  if (descriptor < 0) return 0;
  const std::int32_t ready = waitUntilReadable(descriptor);
  if (ready <= 0) return ready;

  sockaddr_in source{};
  socklen_t sourceSize = sizeof source;
  // Not to wait again: a datagram that the system announced may yet fail its checksum.
  const ssize_t count = recvfrom(descriptor, buffer, static_cast<std::size_t>(length), MSG_DONTWAIT,
                                 reinterpret_cast<sockaddr*>(&source), &sourceSize);
  if (count <= 0) return static_cast<std::int32_t>(count);
  static_cast<char*>(buffer)[count] = '\0';
  if (sourceText != nullptr) inet_ntop(AF_INET, &source.sin_addr, sourceText, INET_ADDRSTRLEN);
  if (sourcePort != nullptr) *sourcePort = ntohs(source.sin_port);
  return static_cast<std::int32_t>(count);
}

std::int32_t ZorUdpSendData(std::int32_t descriptor, const void* buffer, std::int32_t length,
                            const char* destinationText, std::uint16_t port) {
  sockaddr_in destination = makeAddress(inet_addr(destinationText), port);
  in_addr strict;
  if (inet_pton(AF_INET, destinationText, &strict) == 1) destination.sin_addr = strict;
  return static_cast<std::int32_t>(sendto(descriptor, buffer, static_cast<std::size_t>(length), 0,
                                          reinterpret_cast<const sockaddr*>(&destination),
                                          sizeof destination));
}
