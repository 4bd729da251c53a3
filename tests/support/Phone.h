#pragma once

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <string>

/// A phone's UDP socket in the test's network: sends frames to be seen and lines to be read.
class Phone {
 public:
  struct Line {
    std::string text;        ///< Empty when none came in time.
    std::uint16_t port = 0;  ///< Where it came from.
  };

  /// \param port 0 for an ephemeral one.
  explicit Phone(std::uint16_t port = 0) : descriptor_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    setsockopt(descriptor_, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    const sockaddr_in local = address("0.0.0.0", port);
    isBound = bind(descriptor_, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0;
  }
  ~Phone() { close(descriptor_); }
  Phone(const Phone&) = delete;
  Phone& operator=(const Phone&) = delete;

  bool send(const std::string& octets, std::uint16_t port = 25000, const char* host = "10.77.0.1") const {
    const sockaddr_in to = address(host, port);
    return sendto(descriptor_, octets.data(), octets.size(), 0, reinterpret_cast<const sockaddr*>(&to),
                  sizeof to) == static_cast<ssize_t>(octets.size());
  }

  Line receive(int limitMs = 1000) const {
    pollfd wanted{descriptor_, POLLIN, 0};
    if (poll(&wanted, 1, limitMs) <= 0) return {};
    char buffer[2048];
    sockaddr_in from{};
    socklen_t size = sizeof from;
    const ssize_t count =
        recvfrom(descriptor_, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&from), &size);
    return {std::string(buffer, count > 0 ? static_cast<std::size_t>(count) : 0), ntohs(from.sin_port)};
  }

  bool isBound = false;

 private:
  static sockaddr_in address(const char* host, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    inet_pton(AF_INET, host, &result.sin_addr);
    return result;
  }

  int descriptor_;
};
