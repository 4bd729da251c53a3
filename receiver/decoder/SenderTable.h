#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

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

  /// Notes a frame of a sender. Returns its record, 0 to kRecords - 1, or nothing
  /// while it has none. `isPromising(record)` says whether a record holds anything worth keeping.
  template <class IsPromising>
  std::optional<Place> observe(const MacAddress& sender, const IsPromising& isPromising) {
    ++frames_;
    const std::uint64_t key = keyOf(sender);
    std::size_t at = find(key);
    if (at == kSenders) {
      at = count_ < kSenders ? count_++ : longestSilent();
      senders_[at] = Sender{key};
      count(senders_[at]);
      if (at < kRecords) return Place{at, true};
    } else {
      count(senders_[at]);
      if (at < kRecords) return Place{at, false};
    }
    const std::size_t record = cheapest(isPromising);
    if (senders_[at].worth < price(record, isPromising)) return std::nullopt;
    std::swap(senders_[at], senders_[record]);
    senders_[record].heard = 0;
    return Place{record, true};
  }

  /// True when a sender has this record.
  bool used(std::size_t record) const { return record < count_; }

  /// The sender whose record this is.
  MacAddress sender(std::size_t record) const;

 private:
  static constexpr std::size_t kSenders = 5 * kRecords;

  struct Sender {
    std::uint64_t address = 0;
    /// Base-2 logarithm of the points, plus the age of the table in half-lives: so it does not change while
    /// nothing is heard of the sender.
    double worth = -std::numeric_limits<double>::infinity();
    std::uint32_t lastHeard = 0;  ///< In frames of anyone, modulo its range.
    std::uint32_t heard = 0;      ///< Frames since it has its record, up to kFruitless.
  };

  static std::uint64_t keyOf(const MacAddress& address);
  std::size_t find(std::uint64_t address) const;
  std::size_t longestSilent() const;
  void count(Sender& sender) const;

  template <class IsPromising>
  std::size_t cheapest(const IsPromising& isPromising) const {
    std::size_t best = 0;
    for (std::size_t i = 1; i < kRecords; ++i) {
      if (price(i, isPromising) < price(best, isPromising)) best = i;
    }
    return best;
  }

  /// What a sender must be worth to get this record.
  template <class IsPromising>
  double price(std::size_t record, const IsPromising& isPromising) const {
    return senders_[record].worth + premium(senders_[record], isPromising(record));
  }

  static double premium(const Sender& sender, bool isPromising);

  /// Those with a record come first, then the others.
  std::array<Sender, kSenders> senders_{};
  std::size_t count_ = 0;
  std::uint64_t frames_ = 0;
};

}  // namespace zor::receiver
