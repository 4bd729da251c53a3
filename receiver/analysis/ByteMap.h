#pragma once

#include <array>
#include <bitset>
#include <cstdint>

#include "receiver/analysis/FrameLog.h"
#include "receiver/analysis/Report.h"

namespace zor::receiver {

/// The packet bytes that one channel has shown.
class ByteMap {
 public:
  /// Takes the byte at an index; one beyond any packet is ignored.
  News add(int index, std::uint8_t value, std::int64_t time) {
    if (index < 0 || index >= static_cast<int>(kMaxPacketSize)) return News::none;
    const auto slot = static_cast<std::size_t>(index);
    const News news = !heard_[slot]            ? News::fresh
                      : values_[slot] == value ? News::repeated
                                               : News::contradicting;
    if (news == News::contradicting) ++contradictions_;
    if (news == News::fresh) heardAt_[slot] = time;
    heard_.set(slot);
    values_[slot] = value;
    return news;
  }

  const std::bitset<kMaxPacketSize>& heard() const { return heard_; }
  const std::array<std::int64_t, kMaxPacketSize>& heardAt() const { return heardAt_; }
  std::uint8_t value(std::size_t index) const { return values_[index]; }
  unsigned contradictions() const { return contradictions_; }

 private:
  std::bitset<kMaxPacketSize> heard_;
  std::array<std::uint8_t, kMaxPacketSize> values_{};
  std::array<std::int64_t, kMaxPacketSize> heardAt_{};
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
