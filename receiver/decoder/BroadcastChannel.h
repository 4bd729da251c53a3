#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/BaseMatcher.h"
#include "receiver/decoder/BroadcastBase.h"
#include "receiver/decoder/CycleClock.h"
#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/PendingPairs.h"
#include "receiver/decoder/ValueRun.h"

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
///   the order still holds (ValueRun). A value that could still go to several places waits until more bytes
///   are known.
///
/// Once any frame did not fit, a byte from a length counts only after it was seen in several cycles.
class BroadcastChannel {
 public:
  BroadcastChannel();

  /// Takes a broadcast of any origin.
  void observe(int length, std::int64_t time, PacketEvidence& evidence);

  /// Finds the length base from bytes that other channels have shown, unless it is known already. `other` is
  /// the evidence of the other encoding, `likelyBase` the base to expect, if there is a reason to, and
  /// `packetLength` is 0 if unknown.
  void findBase(PacketEvidence& evidence, const PacketEvidence& other, std::optional<int> likelyBase,
                int packetLength);

  /// Another run has started: forgets its timetable and its frames, keeps the length base.
  void restart();

  /// Places the values for which newly learnt bytes leave only one place.
  void placeLate(PacketEvidence& evidence) { openRuns_.place(evidence); }

  /// Finds the length base of these frames together with that of multicast frames, when neither is known.
  /// Returns the base if it is the same for both and no other is possible.
  std::optional<int> commonBase(const PendingPairs& multicast) const;

  /// Length of sync 1, once known.
  std::optional<int> base() const { return base_.base(); }

  const CycleClock& clock() const { return clock_; }

 private:
  struct Frame {
    int length = -1;
    std::int64_t time = 0;
  };
  struct Value {
    std::uint8_t value = 0;
    std::int64_t time = 0;
  };

  /// Room for one cycle of the longest packet and a few repeated sync frames.
  static constexpr std::size_t kHistory = 256;
  static constexpr std::size_t kMaxWaiting = 128;

  bool baseShown(const Frame& frame, const Frame& previous);
  void beginWithBase(PacketEvidence& evidence);
  void remember(int length, std::int64_t time);
  void replay(PacketEvidence& evidence);
  void noticeBurst(std::int64_t time, PacketEvidence& evidence);
  void observeSync(std::int64_t time, PacketEvidence& evidence);
  void decode(int length, std::int64_t time, PacketEvidence& evidence);
  void observeValue(std::uint8_t value, std::int64_t time);
  void observePosition(int index, std::int64_t time, PacketEvidence& evidence);
  void placeByTime(const CycleClock& before, CycleClock::Fit fit, int index, PacketEvidence& evidence);
  void endRun(int lastIndex, std::int64_t time, PacketEvidence& evidence);
  void forgetCycle();

  BroadcastBase base_;
  BaseMatcher matcher_;
  CycleClock clock_;
  std::array<Frame, kHistory> history_{};  ///< A ring of the latest frames.
  std::size_t historyNext_ = 0;
  std::array<Value, kMaxWaiting> waiting_{};  ///< Values not yet placed by time.
  std::size_t waitingCount_ = 0;
  ValueRun run_;
  OpenRuns openRuns_;
  Frame previous_;
  std::int64_t lastDecoded_ = 0;
  struct {
    int index = -1;
    std::int64_t time = 0;
  } lastPosition_;
  bool positionLast_ = false;  ///< The last frame was a position frame.
};

}  // namespace zor::receiver
