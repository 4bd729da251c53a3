#include "receiver/NetworkInterface.h"

#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdio>

namespace zor::receiver {

std::optional<NetworkInterface> findInterface(const std::string& name) {
  ifaddrs* addresses = nullptr;
  if (getifaddrs(&addresses) != 0) return std::nullopt;
  std::optional<NetworkInterface> found;
  for (const ifaddrs* entry = addresses; entry != nullptr; entry = entry->ifa_next) {
    if (name != entry->ifa_name) continue;
    if (!found) found.emplace();
    found->isUp = (entry->ifa_flags & IFF_UP) != 0;
    if (entry->ifa_addr == nullptr) continue;
    if (entry->ifa_addr->sa_family == AF_INET) found->hasIpv4 = true;
    if (entry->ifa_addr->sa_family == AF_PACKET) {
      const auto* link = reinterpret_cast<const sockaddr_ll*>(entry->ifa_addr);
      if (link->sll_halen == found->mac.size()) {
        std::copy_n(link->sll_addr, found->mac.size(), found->mac.begin());
      }
    }
  }
  freeifaddrs(addresses);
  return found;
}

std::string textOf(const MacAddress& mac) {
  char text[sizeof "00:00:00:00:00:00"];
  std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4],
                mac[5]);
  return text;
}

}  // namespace zor::receiver
