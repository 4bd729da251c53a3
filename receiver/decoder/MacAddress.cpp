#include "receiver/decoder/MacAddress.h"

#include <cstdio>

namespace zor::receiver {

std::string textOf(const MacAddress& mac) {
  char text[sizeof "00:00:00:00:00:00"];
  std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4],
                mac[5]);
  return text;
}

}  // namespace zor::receiver
