#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/BaseMatcher.h"
#include "receiver/BroadcastBase.h"
#include "receiver/CycleClock.h"
#include "receiver/PacketEvidence.h"
#include "receiver/PendingPairs.h"
#include "receiver/ValueRun.h"

namespace zor::receiver {

/// Reads the version 5 packet of one sender from the lengths of its broadcasts.
///
/// A byte goes out as a value frame and, after it, a position frame. Either may be lost, so a value must
/// never be given to the next position that happens to be heard: between value i and position i + 1 two
/// frames may be missing. There are two safe ways to place a value, and only these are used:
///
/// - By time. While the position frames keep to an even pace (CycleClock), each byte has a time slot of its
///   own. A value is placed by the slot it was heard in, whether or not its own position frame was heard,
///   once a later position frame has confirmed the grid.
/// - By order. When times mean nothing, as after a power-save buffer has released its frames in one burst,
///   the order still holds (ValueRun). What has more than one place left waits until more bytes are known.
///
/// Once anything did not fit, a byte from a length counts only when it was seen in several cycles.
class BroadcastChannel {
 public:
  BroadcastChannel();

  /// Takes a broadcast of any origin.
  void observe(int length, std::int64_t time, PacketEvidence& evidence);

  /// Finds the length base by bytes that other channels have told, as long as it is not known.
  /// \param other evidence of the other encoding.
  /// \param likelyBase length base to expect, if there is a reason to.
  /// \param packetLength 0 if unknown.
  void findBase(PacketEvidence& evidence, const PacketEvidence& other, std::optional<int> likelyBase,
                int packetLength);

  /// Another run has begun: forgets its timetable and its frames, keeps the length base.
  void restart();

  /// Places what has only now become possible to place, as bytes have become known.
  void placeLate(PacketEvidence& evidence) { openRuns_.place(evidence); }

  /// Finds the length base of these frames and of multicast frames of which neither has one, if it is the
  /// same for both.
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

  // One cycle of the longest packet with a sync frame or two on top.
  static constexpr std::size_t kHistory = 256;
  static constexpr std::size_t kMostWaiting = 128;

  bool baseShown(const Frame& frame, const Frame& previous);
  void beginWithBase(PacketEvidence& evidence);
  void remember(int length, std::int64_t time);
  void replay(PacketEvidence& evidence);
  void noticeBurst(std::int64_t time, PacketEvidence& evidence);
  void beginTimeless(PacketEvidence& evidence) const;
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
  std::array<Frame, kHistory> history_{};
  std::size_t historyNext_ = 0;
  std::array<Value, kMostWaiting> waiting_{};  // values not yet placed by time
  std::size_t waitingCount_ = 0;
  ValueRun run_;
  OpenRuns openRuns_;
  Frame previous_;
  std::int64_t lastDecoded_ = 0;
  struct {
    int index = -1;
    std::int64_t time = 0;
  } lastPosition_;
  bool positionLast_ = false;  // the last frame was a position frame
};

}  // namespace zor::receiver
