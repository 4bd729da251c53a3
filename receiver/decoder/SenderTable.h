#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/MacAddress.h"

namespace zor::receiver {

/// Decides which senders have a record, when there are more senders than records.
///
/// Each frame is a point, and points halve with every kHalfLife frames heard of anyone: so a sender's points
/// are its share of the air. A sender without a record gets that of the one with the fewest points once it
/// has clearly more. The latest senders without a record are remembered with their points as well, four times
/// as many as there are records: one that is lost among passers-by comes back before it is forgotten.
class SenderTable {
 public:
  static constexpr std::size_t kRecords = 16;

  struct Place {
    std::size_t record;
    bool isNew;  ///< The record was another sender's, or nobody's.
  };

  SenderTable();

  /// Notes a frame of a sender. Returns its record, 0 to kRecords - 1, or nothing while it has none.
  /// `isPromising(record)` says whether a record holds anything worth keeping; that may change only after
  /// this function has returned the record.
  template <class IsPromising>
  std::optional<Place> observe(const MacAddress& sender, const IsPromising& isPromising) {
    growUnit();
    std::size_t at = find(sender);
    const bool isKnown = at != kSenders;
    if (!isKnown) at = add(sender);
    count(at);
    if (at < kRecords) return Place{at, !isKnown};
    const std::size_t record = cheapest(isPromising);
    if (senders_[at].points < price(senders_[record])) return std::nullopt;
    giveRecord(at, record);
    return Place{record, true};
  }

  /// True when a sender has this record.
  bool used(std::size_t record) const { return record < count_; }

  /// The sender whose record this is.
  const MacAddress& sender(std::size_t record) const { return senders_[record].address; }

 private:
  static constexpr std::size_t kRemembered = 4 * kRecords;
  static constexpr std::size_t kSenders = kRecords + kRemembered;

  struct Sender {
    MacAddress address{};
    std::uint8_t heard = 0;    ///< Frames since it has its record, up to kFruitless.
    bool isPromising = false;  ///< When the cheapest record was last sought.
    double points = 0;         ///< In units that grow with time instead of points that shrink.
  };

  void growUnit();
  std::size_t find(const MacAddress& address) const;
  std::size_t add(const MacAddress& address);
  void count(std::size_t place);
  void findCheapest();
  void giveRecord(std::size_t place, std::size_t record);

  /// How many points a sender without a record needs to get this one's.
  static double price(const Sender& sender);

  /// The record with the lowest price. It is sought only after a record was heard.
  template <class IsPromising>
  std::size_t cheapest(const IsPromising& isPromising) {
    if (heard_.none()) return cheapest_;
    for (std::size_t i = 0; i < kRecords; ++i) {
      if (heard_[i]) senders_[i].isPromising = isPromising(i);
    }
    heard_.reset();
    findCheapest();
    return cheapest_;
  }

  /// Those with a record come first, then the others.
  std::array<Sender, kSenders> senders_{};
  /// The last byte of each address, which tells most of them apart.
  std::array<std::uint8_t, kSenders> tags_{};
  /// The places of those without a record, the one that is silent longest last.
  std::array<std::uint8_t, kRemembered> silence_{};
  std::size_t count_ = 0;
  double unit_ = 1;              ///< What a frame counts now.
  std::bitset<kRecords> heard_;  ///< Since the cheapest record was sought.
  std::size_t cheapest_ = 0;
};

}  // namespace zor::receiver
