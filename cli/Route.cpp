#include "cli/Route.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/Escape.h"
#include "cli/NetworkInterfaces.h"

namespace zor::cli {
namespace {

/// Makes `descriptor` use `interface` only. Returns false, with `errno`, when the system refuses.
bool bindToInterface(int descriptor, const std::string& interface) {
#if defined(__APPLE__)
  const unsigned int index = if_nametoindex(interface.c_str());
  return setsockopt(descriptor, IPPROTO_IP, IP_BOUND_IF, &index, sizeof index) == 0;
#else
  const auto size = static_cast<socklen_t>(interface.size());
  return setsockopt(descriptor, SOL_SOCKET, SO_BINDTODEVICE, interface.data(), size) == 0;
#endif
}

/// Connects `descriptor`, a UDP socket, which makes the system choose the source address. Returns false, with
/// `errno`, when there is no way.
bool connectTo(int descriptor, const std::string& destination) {
  const int on = 1;
  if (setsockopt(descriptor, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0) return false;
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(6001);  // Any port has the same route.
  inet_pton(AF_INET, destination.c_str(), &to.sin_addr);
  return connect(descriptor, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0;
}

std::string sourceOf(int descriptor) {
  sockaddr_in source{};
  socklen_t size = sizeof source;
  getsockname(descriptor, reinterpret_cast<sockaddr*>(&source), &size);
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &source.sin_addr, text, sizeof text);
  return text;
}

}  // namespace

bool isIpv4Address(const std::string& text) {
  in_addr address{};
  return inet_pton(AF_INET, text.c_str(), &address) == 1;
}

Route findRoute(const std::string& destination, const std::string& interface) {
  Route route;
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  const bool isBound = descriptor >= 0 && (interface.empty() || bindToInterface(descriptor, interface));
  if (isBound && connectTo(descriptor, destination)) {
    route.source = sourceOf(descriptor);
    route.interface = interface.empty() ? interfaceWithAddress(route.source) : interface;
  } else {
    route.error = errno;
  }
  if (descriptor >= 0) close(descriptor);
  return route;
}

std::string routeText(const Route& route) {
  if (route.error != 0) return std::string("cannot leave (") + std::strerror(route.error) + ")";
  const std::string interface = route.interface.empty() ? "an unknown interface" : printable(route.interface);
  return "leave by " + interface + " from " + route.source;
}

Json routeJson(const Route& route) {
  if (route.error != 0) return {{"problem", std::strerror(route.error)}};
  return {{"interface", jsonText(route.interface)}, {"source", route.source}};
}

std::string routesText(const Route& multicast, const Route& broadcast) {
  if (multicast == broadcast) return "multicasts and broadcasts " + routeText(multicast);
  return "multicasts " + routeText(multicast) + ", broadcasts " + routeText(broadcast);
}

}  // namespace zor::cli
