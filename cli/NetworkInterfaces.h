#pragma once

#include <string>
#include <vector>

namespace zor::cli {

/// A network interface on which modules could be, with one of its IPv4 addresses.
struct NetworkInterface {
  std::string name;     ///< Bytes, as the system has them.
  std::string address;  ///< Dotted quad; empty when it has none.
  std::string state;    ///< "up", "no carrier" or "down"; with ", no broadcasts" for one such as a tunnel.
};

/// All but the loopback, one entry for each IPv4 address. Throws `RunFailure` when the system does not say.
std::vector<NetworkInterface> networkInterfaces();

/// The name of the interface that has the IPv4 address `address`, the loopback included; empty when none has.
std::string interfaceWithAddress(const std::string& address);

}  // namespace zor::cli
