#pragma once

#include <bitset>

#include "bench/simulator/PhonePlan.h"

namespace zor::bench {

/// The bound: a receiver that knows beforehand what every frame means, and so needs each piece of information
/// once, from any frame that got through. No decoder can be sooner.
class AllKnowing {
 public:
  explicit AllKnowing(const PhonePlan& plan) : plan_(&plan) {}

  void observe(const PlannedFrame& frame) {
    for (const int piece : frame.pieces) {
      if (piece != kNoPiece) learn(piece);
    }
  }

  bool complete() const {
    const int version3 = plan_->endVersion3 - kFirstShared;
    return known5_ == plan_->piecesVersion5 || (known_[kVersion3CrcPiece] && known3_ == version3);
  }

 private:
  static constexpr int kFirstShared = 2;

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

}  // namespace zor::bench
