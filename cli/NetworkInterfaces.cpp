#include "cli/NetworkInterfaces.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "cli/ExitCode.h"

namespace zor::cli {
namespace {

using Addresses = std::unique_ptr<ifaddrs, decltype(&freeifaddrs)>;

Addresses systemAddresses() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) {
    throw RunFailure(std::string("the system does not list its network interfaces (") + std::strerror(errno) +
                     "): close other programs, then try again");
  }
  return {first, freeifaddrs};
}

/// The IPv4 address of `entry`; empty when it is of another family.
std::string addressOf(const ifaddrs& entry) {
  if (entry.ifa_addr == nullptr || entry.ifa_addr->sa_family != AF_INET) return {};
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(entry.ifa_addr)->sin_addr, text, sizeof text);
  return text;
}

std::string stateOf(const ifaddrs& entry) {
  std::string state = "up";
  if ((entry.ifa_flags & IFF_RUNNING) == 0) state = "no carrier";
  if ((entry.ifa_flags & IFF_UP) == 0) state = "down";
  if ((entry.ifa_flags & IFF_BROADCAST) == 0) state += ", no broadcasts";
  return state;
}

}  // namespace

std::vector<NetworkInterface> networkInterfaces() {
  const Addresses addresses = systemAddresses();
  std::vector<NetworkInterface> found;
  for (const ifaddrs* entry = addresses.get(); entry != nullptr; entry = entry->ifa_next) {
    if ((entry->ifa_flags & IFF_LOOPBACK) != 0) continue;
    const std::string address = addressOf(*entry);
    const auto known = std::ranges::find(found, std::string(entry->ifa_name), &NetworkInterface::name);
    if (known == found.end()) {
      found.push_back({entry->ifa_name, address, stateOf(*entry)});
    } else if (known->address.empty()) {
      known->address = address;
    } else if (!address.empty()) {
      found.insert(known + 1, {entry->ifa_name, address, stateOf(*entry)});
    }
  }
  return found;
}

std::string interfaceWithAddress(const std::string& address) {
  const Addresses addresses = systemAddresses();
  for (const ifaddrs* entry = addresses.get(); entry != nullptr; entry = entry->ifa_next) {
    if (addressOf(*entry) == address) return entry->ifa_name;
  }
  return {};
}

}  // namespace zor::cli
