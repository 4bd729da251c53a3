#pragma once

#include <string>

#include "cli/Output.h"

namespace zor::cli {

/// The destinations of the two channels: the multicast channel's sync group, and every host.
inline constexpr char kMulticastDestination[] = "239.122.111.114";
inline constexpr char kBroadcastDestination[] = "255.255.255.255";

/// True for an IPv4 address as four numbers, none with a leading zero.
bool isIpv4Address(const std::string& text);

/// How the system sends a datagram to an address now.
struct Route {
  int error = 0;          ///< The system's error number when it would not send one, else 0.
  std::string interface;  ///< Its name; empty when the source address belongs to none.
  std::string source;     ///< The source address.

  bool operator==(const Route&) const = default;
};

/// Asks the system for the route to `destination`, a dotted quad, by way of `interface` unless that is empty.
/// Sends nothing.
Route findRoute(const std::string& destination, const std::string& interface);

/// "leave by wlan0 from 192.168.1.5" or "cannot leave (...)".
std::string routeText(const Route& route);

/// The keys "interface" and "source", or "problem".
Json routeJson(const Route& route);

/// How multicasts and broadcasts leave, in one clause: "multicasts and broadcasts leave by wlan0 from ...".
std::string routesText(const Route& multicast, const Route& broadcast);

}  // namespace zor::cli
