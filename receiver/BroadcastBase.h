#pragma once

#include <cstdint>
#include <optional>

namespace zor::receiver {

/// Finds the length base of a sender's broadcasts, that is the length of sync 1, from the steps between the
/// lengths of successive frames: no two frames of a cycle but sync 1 and sync 2 lie kSync2Offset apart, and
/// sync 3 follows sync 2 at once. Frames of other origin may look so by chance, so candidates are voted for.
class BroadcastBase {
 public:
  /// Takes the length of the next frame.
  /// \return true when the base has become known or has changed.
  bool observe(int length, std::int64_t time);

  /// Counts weight votes for a base.
  /// \return true when the base has become known or has changed.
  bool vote(int candidate, int weight);

  std::optional<int> base() const { return base_; }

  /// Forgets the frames heard, keeps the base until another one is shown.
  void restart();

 private:
  std::optional<int> base_;
  int votes_ = 0;
  int previousLength_ = -1;
  std::int64_t previousTime_ = 0;
  int shortest_ = -1;
  int longest_ = -1;
};

}  // namespace zor::receiver
