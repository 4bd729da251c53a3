#include "receiver/module/ModuleSocket.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace zor::receiver {

ModuleSocket::~ModuleSocket() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::string ModuleSocket::open(std::uint16_t port, const std::string& interface) {
  const auto failure = [port] {
    return "cannot open UDP port " + std::to_string(port) + ": " + std::generic_category().message(errno);
  };
  descriptor_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor_ < 0) return failure();

  const int on = 1;
  if (setsockopt(descriptor_, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0) return failure();
  if (!interface.empty()) {
    // Older systems reserve this for the administrator. The socket then serves every interface, which does no
    // harm on a host that has only one.
    static_cast<void>(setsockopt(descriptor_, SOL_SOCKET, SO_BINDTODEVICE, interface.c_str(),
                                 static_cast<socklen_t>(interface.size())));
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return failure();
  return {};
}

std::optional<std::string_view> ModuleSocket::receive(std::span<char> buffer, sockaddr_in& from) const {
  socklen_t size = sizeof from;
  // With MSG_TRUNC the result is the datagram's own length even when that exceeds the buffer.
  const ssize_t length = recvfrom(descriptor_, buffer.data(), buffer.size(), MSG_TRUNC,
                                  reinterpret_cast<sockaddr*>(&from), &size);
  if (length < 0) return std::nullopt;
  const auto bytes = static_cast<std::size_t>(length);
  return std::string_view{buffer.data(), bytes <= buffer.size() ? bytes : 0};
}

int ModuleSocket::send(std::string_view line, const sockaddr_in& to) const {
  const ssize_t sent = sendto(descriptor_, line.data(), line.size(), MSG_NOSIGNAL,
                              reinterpret_cast<const sockaddr*>(&to), sizeof to);
  return sent < 0 ? errno : 0;
}

std::string textOf(const sockaddr_in& address) {
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
  return std::string{text} + ":" + std::to_string(ntohs(address.sin_port));
}

sockaddr_in broadcastAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_BROADCAST);
  return address;
}

}  // namespace zor::receiver
