#include "receiver/capture/NetworkInterface.h"

#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>

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

}  // namespace zor::receiver
