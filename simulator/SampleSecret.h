#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ZOR/state/Limits.h"
#include "simulator/PhonePlan.h"

namespace zor::simulator {

/// Returns `length` bytes of the common text, or of the longest one when they are more than it has.
inline std::string sampleText(std::size_t length, std::string_view common, std::string_view longest) {
  return std::string((length <= common.size() ? common : longest).substr(0, length));
}

/// Returns the texts of these lengths, at most 32 and 64 bytes, that benchmarks and zorctl simulate.
inline Secret sampleSecret(std::size_t ssidLength, std::size_t passPhraseLength) {
  constexpr std::string_view kSsid = "a network of thirty-two bytes ok";
  constexpr std::string_view kPassPhrase = "0123456789abcdef and so on until sixty-four bytes are full - yes";
  static_assert(kSsid.size() == kZorMaxSsidLength && kPassPhrase.size() == kZorMaxPassPhraseLength);
  return {sampleText(ssidLength, "HomeWifi1", kSsid),
          sampleText(passPhraseLength, "password1234", kPassPhrase),
          {}};
}

/// Returns `secret` with a typing error in the pass phrase.
inline Secret mistyped(Secret secret) {
  if (!secret.passPhrase.empty()) secret.passPhrase.pop_back();
  secret.passPhrase += '?';
  return secret;
}

}  // namespace zor::simulator
