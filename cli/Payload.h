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

inline constexpr std::size_t kLongestPassPhrase = 64;

/// Throws `WrongUse` when a field is too long, or when all of them together do not fit a packet.
void checkLengths(const Payload& payload);

}  // namespace zor::cli
