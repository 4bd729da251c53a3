#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

/// Answers every HTTP request on the loopback with the same bytes, then closes the connection. Without bytes
/// it keeps the client waiting until the server ends.
class HttpServer {
 public:
  explicit HttpServer(std::string response) : response_(std::move(response)) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    // Without a listener every connection is refused, which no test mistakes for success.
    static_cast<void>(bind(listener_, reinterpret_cast<sockaddr*>(&address), size));
    static_cast<void>(listen(listener_, 4));
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  ~HttpServer() {
    shutdown(listener_, SHUT_RDWR);
    if (const int client = client_; client >= 0) shutdown(client, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }

  std::string port() const { return std::to_string(port_); }
  int connections() const { return connections_; }

 private:
  void serve() {
    for (int client; (client = accept(listener_, nullptr, nullptr)) >= 0;) {
      client_ = client;
      ++connections_;
      std::string request;
      char bytes[512];
      for (ssize_t count; request.find("\r\n\r\n") == std::string::npos || response_.empty();) {
        if ((count = read(client, bytes, sizeof bytes)) <= 0) break;
        request.append(bytes, static_cast<std::size_t>(count));
      }
      // The socket blocks, so this sends everything, unless the client has left.
      static_cast<void>(send(client, response_.data(), response_.size(), MSG_NOSIGNAL));
      client_ = -1;
      close(client);
    }
  }

  const std::string response_;
  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::atomic<int> client_{-1};
  std::atomic<int> connections_{0};
  std::thread thread_;
};
