#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/PacketEvidence.h"

namespace zor::receiver {

/// The values heard between two position frames. Whatever was lost, their order holds: between positions i
/// and j only the values i + 1 to j are sent. A value is placed once only one place is possible: when as many
/// values were heard as were sent, or when bytes already known rule out the other places.
class ValueRow {
 public:
  /// `after` is the index of the position frame before the values, -1 after a sync frame, nothing if unknown;
  /// `time` is that of this frame.
  void begin(std::optional<int> after, std::int64_t time);

  /// Takes the next value. The same value twice in succession counts once: it may be a copy.
  void push(std::uint8_t value);

  /// The position frame after the values was heard. If its index is not above the one before them, it is of
  /// the next cycle. `packetLength` is 0 if unknown; `pace` is the time from one byte to the next. Returns
  /// true when there is anything to place. There is not when a whole cycle may have been lost in between, as
  /// the order then proves nothing.
  bool end(int index, std::int64_t time, int packetLength, std::int64_t pace);

  /// Once the row has ended, adds each value with only one possible place to the evidence, once. Returns true
  /// when nothing more can be learnt from this row.
  bool place(PacketEvidence& evidence);

  /// True for the position that comes next when nothing is lost.
  bool isFollowedBy(int index) const { return after_ && index == *after_ + 1; }

 private:
  static constexpr std::size_t kMaxValues = 8;

  Moment time_ = 0;  ///< Of the frame before the values; once the row has ended, of the one after them.
  std::optional<std::int16_t> after_;
  std::int16_t last_ = 0;     ///< Index of the position frame after the values, plus modulus_ if it is of the
                              ///< next cycle.
  std::int16_t modulus_ = 0;  ///< Indices from this one on are of the next cycle.
  std::uint8_t count_ = 0;
  std::uint8_t placed_ = 0;  ///< One bit for each value.
  std::array<std::uint8_t, kMaxValues> values_{};
};

/// Rows with values that could still go to several places, until more is known. When there are too many, the
/// oldest is forgotten.
class OpenRows {
 public:
  void add(const ValueRow& row);

  /// Places the values for which newly learnt bytes leave only one place.
  void place(PacketEvidence& evidence);

  void clear() { count_ = 0; }

 private:
  static constexpr std::size_t kMaxRows = 12;

  std::array<ValueRow, kMaxRows> rows_{};  ///< In the order in which they were heard.
  std::size_t count_ = 0;
  unsigned changesPlaced_ = 0;
};

}  // namespace zor::receiver
