#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/PacketEvidence.h"

namespace zor::receiver {

/// The values heard between two position frames. Whatever was lost, their order holds: between positions i
/// and j only the values i + 1 to j are sent. So a value has its place when there is one way left to place
/// it, because as many were heard as were sent or because bytes known already exclude the others.
class ValueRun {
 public:
  /// \param after index of the position frame before the values, -1 behind a sync frame, nothing if unknown.
  /// \param time of that frame.
  void begin(std::optional<int> after, std::int64_t time);

  /// Takes the next value. The same value again is a copy, or makes no difference.
  void push(std::uint8_t value);

  /// The position frame behind the values was heard. If its index is not above the one before them, it is of
  /// the next cycle.
  /// \param packetLength 0 if unknown.
  /// \param pace from one byte to the next: in a time in which a cycle may have been lost whole, the order
  /// proves nothing.
  /// \return true when there is anything to place.
  bool end(int index, std::int64_t time, int packetLength, std::int64_t pace);

  /// Tells the values that have one place left, once the run has ended; each once.
  /// \return true when there is no more to learn from this run.
  bool place(PacketEvidence& evidence);

  /// True for the position that comes next when nothing is lost.
  bool isFollowedBy(int index) const { return after_ && index == *after_ + 1; }

 private:
  static constexpr std::size_t kMostValues = 8;

  std::optional<int> after_;
  int last_ = 0;     // index of the position frame behind; in the next cycle it counts on
  int modulus_ = 0;  // where the next cycle begins to count
  std::int64_t time_ = 0;
  std::int64_t begun_ = 0;
  std::array<std::uint8_t, kMostValues> values_{};
  std::array<bool, kMostValues> told_{};
  std::size_t count_ = 0;
};

/// Runs with values that have more than one place left, until more is known. When there are too many, the
/// oldest is forgotten.
class OpenRuns {
 public:
  void add(const ValueRun& run);

  /// Places what has only now become possible to place, as bytes have become known.
  void place(PacketEvidence& evidence);

  void clear() { count_ = 0; }

 private:
  static constexpr std::size_t kMostRuns = 64;

  std::array<ValueRun, kMostRuns> runs_{};  // in the order in which they were heard
  std::size_t count_ = 0;
  unsigned changesPlaced_ = 0;
};

}  // namespace zor::receiver
