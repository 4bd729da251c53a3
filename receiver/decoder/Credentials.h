#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "receiver/decoder/MacAddress.h"

namespace zor::receiver {

/// The encoding that a set of credentials was read from.
enum class Encoding : std::uint8_t { version3 = 3, version5 = 5 };

/// What a phone has sent: enough to join its network.
struct Credentials {
  /// 0 to 32 bytes, as sent: not necessarily text, escape before showing.
  std::string ssid;
  /// 0 to 64 bytes, as sent.
  std::string passPhrase;
  /// 0 to 16 bytes of application data. Always empty in version 3, which does not carry it.
  std::vector<std::uint8_t> append;
  Encoding encoding = Encoding::version5;
  MacAddress sender{};

  bool operator==(const Credentials&) const = default;
};

/// A packet that was complete by all evidence and stopped by nothing but its CRC.
struct Rejection {
  Credentials credentials;  ///< What the packet says.
  std::uint8_t crc = 0;     ///< As heard; not that of the rest.

  bool operator==(const Rejection&) const = default;
};

}  // namespace zor::receiver
