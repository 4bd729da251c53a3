#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zor::receiver {

/// A module's UDP socket over IPv4, allowed to broadcast. Nothing blocks. Not thread-safe.
class ModuleSocket {
 public:
  ModuleSocket() = default;
  ~ModuleSocket();
  ModuleSocket(const ModuleSocket&) = delete;
  ModuleSocket& operator=(const ModuleSocket&) = delete;

  /// Binds to `port` on every address, 0 for an ephemeral port, and to `interface` as far as the system
  /// permits it; empty for any. Call it once. Returns empty, or one line that says why it failed.
  std::string open(std::uint16_t port, const std::string& interface);

  /// Readable while a datagram waits; -1 before open(). Belongs to this object.
  int descriptor() const { return descriptor_; }

  /// Takes the next datagram. Returns nothing when none waits; else its bytes, valid as long as `buffer`, or
  /// no bytes when the datagram did not fit: a line that was cut would mean something else.
  std::optional<std::string_view> receive(std::span<char> buffer, sockaddr_in& from) const;

  /// Sends one datagram. Returns 0 or the system's error number.
  int send(std::string_view line, const sockaddr_in& to) const;

 private:
  int descriptor_ = -1;
};

/// "10.77.0.1:25000".
std::string textOf(const sockaddr_in& address);

/// The limited broadcast address (RFC 919) with a UDP port.
sockaddr_in broadcastAddress(std::uint16_t port);

}  // namespace zor::receiver
