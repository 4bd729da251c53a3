#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zor::cli {

/// What a run tells the module. All three are bytes.
struct Credentials {
  std::string ssid;
  std::string passPhrase;
  std::vector<std::uint8_t> append;
};

inline constexpr std::size_t kLongestPassPhrase = 64;

/// Throws `WrongUse` when a field is too long, or when all of them together do not fit a packet.
void checkLengths(const Credentials& credentials);

/// The pass phrase in the first line of the file `name`, without its line end. Throws `WrongUse` when the
/// file cannot be read, when it holds nothing, more than one line, or a NUL.
std::string readPassPhraseFile(const std::string& name);

}  // namespace zor::cli
