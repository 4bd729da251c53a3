#pragma once

#include <cstdint>
#include <string>

#include "tests/support/Module.h"

/// A phone's UDP socket in the test's network: sends frames to be seen and lines to be read.
class Phone {
 public:
  struct Line {
    std::string text;        ///< Empty when none came in time.
    std::uint16_t port = 0;  ///< Where it came from.
  };

  /// \param port 0 for an ephemeral one.
  explicit Phone(std::uint16_t port = 0) : socket_(port) {}

  void send(const std::string& octets, std::uint16_t port = 25000, const char* host = "10.77.0.1") const {
    socket_.send(octets, port, host);
  }

  Line receive(int limitMs = 1000) const {
    const Module::Request received = socket_.receive(limitMs);
    return {received.line, received.port};
  }

 private:
  Module socket_;  // A phone's socket is like a module's.
};
