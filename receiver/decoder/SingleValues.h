#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {

/// Value frames that were heard once, where each is sent in two lengths: so each leaves two values. Two of
/// one byte whose lengths differ by the step are its two copies, and leave one.
class SingleValues {
 public:
  /// Takes a frame that gives the byte at `index` this value if it is the shorter copy. Returns the value
  /// once both copies were heard.
  std::optional<int> observe(int index, int valueIfShorter, int step) {
    const auto place = static_cast<std::size_t>(index);
    const auto value = static_cast<std::uint8_t>(valueIfShorter);
    const auto apart = static_cast<std::uint8_t>(value - values_[place]);
    const bool known = heard_.test(place);
    values_[place] = value;
    heard_.set(place);
    if (known && apart == step) return valueIfShorter - step;
    if (known && static_cast<std::uint8_t>(-apart) == step) return valueIfShorter;
    return std::nullopt;
  }

  void clear() { heard_.reset(); }

 private:
  std::array<std::uint8_t, wire::kMaxPacketBytes> values_{};  ///< Modulo 256.
  std::bitset<wire::kMaxPacketBytes> heard_;
};

}  // namespace zor::receiver
