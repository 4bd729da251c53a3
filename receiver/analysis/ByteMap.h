#pragma once

#include <array>
#include <bitset>
#include <cstdint>

#include "receiver/analysis/Report.h"

namespace zor::receiver {

/// The packet bytes that one channel has shown.
class ByteMap {
 public:
  /// Takes the byte at an index; one beyond any packet is ignored.
  void add(int index, std::uint8_t value) {
    if (index < 0 || index >= static_cast<int>(kMaxPacketSize)) return;
    const auto slot = static_cast<std::size_t>(index);
    if (heard_[slot] && values_[slot] != value) ++contradictions_;
    heard_.set(slot);
    values_[slot] = value;
  }

  const std::bitset<kMaxPacketSize>& heard() const { return heard_; }
  std::uint8_t value(std::size_t index) const { return values_[index]; }
  unsigned contradictions() const { return contradictions_; }

 private:
  std::bitset<kMaxPacketSize> heard_;
  std::array<std::uint8_t, kMaxPacketSize> values_{};
  unsigned contradictions_ = 0;
};

/// How far a packet is known from the maps of the channels that carry it.
struct PacketState {
  int known = 0;
  int total = 0;  ///< 0 while the header is not known, or impossible.
  Crc crc = Crc::unknown;
};

PacketState judgePacket(Encoding encoding, const ByteMap& map, const ByteMap& other);

}  // namespace zor::receiver
