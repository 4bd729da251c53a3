#pragma once

#include <cstdint>
#include <optional>

namespace zor::receiver {

/// Finds the length base of a sender's broadcasts, which is the length of sync 1, from the steps between the
/// lengths of successive frames. Of all frames of a cycle only sync 1 and sync 2 lie kSync2Offset apart, and
/// sync 3 follows sync 2 directly. Frames of other origin may look the same by chance, so candidates collect
/// votes.
class BroadcastBase {
 public:
  /// Takes the length of the next frame. Returns true when the base has become known or has changed.
  bool observe(int length, std::int64_t time);

  /// Counts `weight` votes for a base. Returns true when the base has become known or has changed.
  bool vote(int candidate, int weight);

  std::optional<int> base() const { return base_; }

  /// Forgets the frames heard. Keeps the base until another one wins the vote.
  void restart();

 private:
  std::optional<int> base_;
  int votes_ = 0;
  int previousLength_ = -1;  ///< -1 before the first frame.
  std::int64_t previousTime_ = 0;
  int shortest_ = -1;
  int longest_ = -1;
};

}  // namespace zor::receiver
