#pragma once

#include <bitset>

#include "simulator/PhonePlan.h"

namespace zor::simulator {

/// The bound: a receiver that knows in advance what every frame means. It needs each piece of information
/// once, from any frame that gets through, so no decoder can be faster.
class IdealReceiver {
 public:
  /// `plan` must outlive the receiver.
  explicit IdealReceiver(const PhonePlan& plan) : plan_(&plan) {}

  void observe(const PlannedFrame& frame) {
    for (const int piece : frame.pieces) {
      if (piece != kNoPiece) learn(piece);
    }
  }

  /// True once all of the version 5 packet or all of the version 3 packet is known.
  bool complete() const {
    const int version3 = plan_->endVersion3 - kFirstShared;
    return known5_ == plan_->piecesVersion5 || (known_[kVersion3CrcPiece] && known3_ == version3);
  }

 private:
  static constexpr int kFirstShared = 2;  ///< Both packets hold the pieces from here on.

  void learn(int piece) {
    const auto index = static_cast<std::size_t>(piece);
    if (known_[index]) return;
    known_[index] = true;
    if (piece < plan_->piecesVersion5) ++known5_;
    if (piece >= kFirstShared && piece < plan_->endVersion3) ++known3_;
  }

  const PhonePlan* plan_;
  std::bitset<kPieces> known_;
  int known5_ = 0;
  int known3_ = 0;
};

}  // namespace zor::simulator
