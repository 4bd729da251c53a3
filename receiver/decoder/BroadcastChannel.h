#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/BaseMatcher.h"
#include "receiver/decoder/BroadcastBase.h"
#include "receiver/decoder/CycleClock.h"
#include "receiver/decoder/FrameHistory.h"
#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/PendingPairs.h"
#include "receiver/decoder/SingleValues.h"
#include "receiver/decoder/ValueRow.h"

namespace zor::receiver {

/// Reads the version 5 packet of one sender from the lengths of its broadcasts.
///
/// A byte is sent as a value frame and, after it, a position frame. Either may be lost, so a value must never
/// be given to whichever position is heard next: between value i and position i + 1 two frames may be
/// missing. There are two safe ways to place a value, and only these are used:
///
/// - By time. While the position frames keep an even pace (CycleClock), each byte has a time slot of its own.
///   A value is placed by the slot it was heard in, whether or not its own position frame was heard, once a
///   later position frame has confirmed the grid.
/// - By order. When times mean nothing, as after a power-save buffer has released its frames in one burst,
///   the order still holds (ValueRow). A value that could still go to several places waits until more bytes
///   are known.
class BroadcastChannel {
 public:
  BroadcastChannel();

  /// Takes a broadcast of any origin.
  void observe(int length, std::int64_t time, PacketEvidence& evidence);

  /// Of a frame that was sent with this length or with one that is `step` shorter: returns the shorter
  /// length, when what is known leaves only one of both.
  std::optional<int> shorterLength(int length, int step, std::int64_t time, const PacketEvidence& evidence);

  /// Finds the length base from bytes that other channels have shown, unless it is known already.
  /// `likelyBase` is the base to expect, if there is a reason to.
  void findBase(PacketEvidence& evidence, std::optional<int> likelyBase);

  /// Another run has begun: forgets its timetable and its frames, keeps the length base.
  void restart();

  /// Places the values for which newly learnt bytes leave only one place.
  void placeLate(PacketEvidence& evidence) { openRows_.place(evidence); }

  /// Finds the length base of these frames together with that of multicast frames, when neither is known.
  /// Returns the base if it is the same for both and no other is possible.
  std::optional<int> commonBase(const PendingPairs& multicast) const;

  /// Length of sync 1, once known.
  std::optional<int> base() const { return base_.base(); }

  const CycleClock& clock() const { return clock_; }

 private:
  struct Value {
    std::int64_t time = 0;
    std::uint8_t value = 0;
  };

  static constexpr std::size_t kMaxWaiting = 12;

  bool baseShown(int length, std::int64_t time);
  void beginWithBase(PacketEvidence& evidence);
  void noticeBurst(std::int64_t time, PacketEvidence& evidence);
  void observeSync(std::int64_t time, PacketEvidence& evidence);
  void decode(int length, std::int64_t time, PacketEvidence& evidence);
  void observeValue(std::uint8_t value, std::int64_t time);
  void observePosition(int index, std::int64_t time, PacketEvidence& evidence);
  void placeByTime(const CycleClock& before, CycleClock::Fit fit, int index, PacketEvidence& evidence);
  void endRow(int lastIndex, std::int64_t time, PacketEvidence& evidence);
  void forgetCycle();
  bool isPossible(int offset, std::int64_t time, const PacketEvidence& evidence) const;

  BroadcastBase base_;
  BaseMatcher matcher_;
  CycleClock clock_;
  FrameHistory history_;
  std::array<Value, kMaxWaiting> waiting_{};  ///< Values not yet placed by time.
  std::size_t waitingCount_ = 0;
  ValueRow row_;
  OpenRows openRows_;
  SingleValues singleValues_;
  std::int64_t lastDecoded_ = 0;
  int shortGaps_ = 0;      ///< In a row.
  int lastPosition_ = -1;  ///< Index of the last frame, if it was a position frame; else -1.
};

}  // namespace zor::receiver
