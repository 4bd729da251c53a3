#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zor::cli {

/// What a run's packets carry to the module. All three are bytes.
struct Payload {
  std::string ssid;
  std::string passPhrase;
  std::vector<std::uint8_t> append;
};

/// True when the three together fit a packet.
bool fits(const Payload& payload);

/// Throws `WrongUse` when the SSID is empty, a field is too long, or the three together do not fit a packet.
void checkLengths(const Payload& payload);

}  // namespace zor::cli
