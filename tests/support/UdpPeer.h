#pragma once

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "tests/support/Wait.h"

/// A UDP socket of the test's own on the loopback or in the test's network: a module's or a phone's.
class UdpPeer {
 public:
  struct Datagram {
    std::string text;        ///< Empty when none came in time.
    std::uint16_t port = 0;  ///< Where it came from, on `address`.
    std::string address;
  };

  /// `port` is 0 for an ephemeral one.
  explicit UdpPeer(std::uint16_t port = 0, const std::string& address = "0.0.0.0") {
    descriptor_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(descriptor_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    setsockopt(descriptor_, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    const sockaddr_in local = at(port, address);
    if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
      close(descriptor_);
      throw std::runtime_error("cannot bind a socket of the test");
    }
  }
  ~UdpPeer() { close(descriptor_); }
  UdpPeer(const UdpPeer&) = delete;
  UdpPeer& operator=(const UdpPeer&) = delete;

  void send(const std::string& text, std::int32_t port, const std::string& address = "127.0.0.1") const {
    sockaddr_in to = at(static_cast<std::uint16_t>(port), address);
    iovec content{const_cast<char*>(text.data()), text.size()};
    msghdr message{};
    message.msg_name = &to;
    message.msg_namelen = sizeof to;
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    sendmsg(descriptor_, &message, 0);  // Not sendto, whose calls are taken for the library's.
  }

  Datagram receive(int limitMs = 1000) const {
    pollfd wanted{descriptor_, POLLIN, 0};
    if (poll(&wanted, 1, patience(limitMs)) <= 0) return {};
    char buffer[2048];
    sockaddr_in from{};
    iovec content{buffer, sizeof buffer};
    msghdr message{};
    message.msg_name = &from;
    message.msg_namelen = sizeof from;
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    const ssize_t count = recvmsg(descriptor_, &message, 0);  // Not recvfrom, for the same reason.
    if (count < 0) return {};
    char address[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &from.sin_addr, address, sizeof address);
    return {std::string(buffer, static_cast<std::size_t>(count)), ntohs(from.sin_port), address};
  }

  void answer(const Datagram& request, const std::string& text) const {
    send(text, request.port, request.address);
  }

 private:
  static sockaddr_in at(std::uint16_t port, const std::string& address) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &result.sin_addr);
    return result;
  }

  int descriptor_ = -1;
};
