#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/BaseMatcher.h"
#include "receiver/BroadcastBase.h"
#include "receiver/CycleClock.h"
#include "receiver/PacketEvidence.h"

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
///   the order still holds: between positions i and j only the values i + 1 to j are sent. A value is placed
///   when one way is left to place it, because as many were heard as were sent or because bytes known
///   already exclude the others. Such bytes count only once they were seen in several cycles.
class BroadcastChannel {
 public:
  BroadcastChannel();

  /// Takes a broadcast of any origin.
  /// \param other evidence of the other encoding, which helps to find the length base.
  /// \param likelyBase length base to expect, if there is a reason to.
  void observe(int length, std::int64_t time, PacketEvidence& evidence, const PacketEvidence& other,
               std::optional<int> likelyBase);

  /// Another run has begun: forgets its timetable and its frames, keeps the length base.
  void restart();

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

  /// Values heard since the last position or sync frame, copies counted once.
  struct ValueRun {
    static constexpr std::size_t kMost = 8;
    std::optional<int> after;  // index of the position frame before them
    std::array<std::uint8_t, kMost> values{};
    std::size_t count = 0;

    void begin(std::optional<int> position);
    void push(std::uint8_t value);
  };

  // One cycle of the longest packet with a sync frame or two on top.
  static constexpr std::size_t kHistory = 256;
  static constexpr std::size_t kMostWaiting = 128;

  bool findBase(const Frame& frame, const Frame& previous);
  bool matchBase(const PacketEvidence& evidence, const PacketEvidence& other, std::optional<int> likelyBase);
  void remember(int length, std::int64_t time);
  void replay(PacketEvidence& evidence);
  void noticeBurst(std::int64_t time);
  void observeSync(int offset, std::int64_t time, PacketEvidence& evidence);
  void decode(int length, std::int64_t time, PacketEvidence& evidence);
  void observeValue(std::uint8_t value, std::int64_t time);
  void observePosition(int index, std::int64_t time, PacketEvidence& evidence);
  void placeByTime(const CycleClock& before, CycleClock::Fit fit, int index, PacketEvidence& evidence);
  void placeByOrder(int lastIndex, std::int64_t time, PacketEvidence& evidence) const;
  void forgetCycle();

  BroadcastBase base_;
  BaseMatcher matcher_;
  CycleClock clock_;
  std::array<Frame, kHistory> history_{};
  std::size_t historyNext_ = 0;
  std::array<Value, kMostWaiting> waiting_{};  // values not yet placed by time
  std::size_t waitingCount_ = 0;
  ValueRun run_;
  Frame previous_;
  std::int64_t lastDecoded_ = 0;
  struct {
    int index = -1;
    std::int64_t time = 0;
  } lastPosition_;
};

}  // namespace zor::receiver
