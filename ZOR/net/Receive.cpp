#include "ZOR/net/Receive.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstddef>

namespace zor {

Received receiveNow(std::int32_t descriptor, void* buffer, std::int32_t length, char* sourceText,
                    std::uint32_t* sourcePort) {
  sockaddr_in source{};
  socklen_t sourceSize = sizeof source;
  // Not to wait: a datagram that the system announced may yet fail its checksum.
  const ssize_t count = recvfrom(descriptor, buffer, static_cast<std::size_t>(length), MSG_DONTWAIT,
                                 reinterpret_cast<sockaddr*>(&source), &sourceSize);
  if (count < 0) {
    const bool isEmpty = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    return {-1, isEmpty ? 0 : errno};
  }
  if (count == 0) return {0, 0};
  static_cast<char*>(buffer)[count] = '\0';
  if (sourceText != nullptr) inet_ntop(AF_INET, &source.sin_addr, sourceText, INET_ADDRSTRLEN);
  if (sourcePort != nullptr) *sourcePort = ntohs(source.sin_port);
  return {static_cast<std::int32_t>(count), 0};
}

bool isForeign(std::int32_t error) {
  return error == EBADF || error == ENOTSOCK;
}

}  // namespace zor
