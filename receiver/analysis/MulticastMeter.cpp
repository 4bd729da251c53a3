#include "receiver/analysis/MulticastMeter.h"

namespace zor::receiver {
void MulticastMeter::observeSync(std::int32_t length, std::int64_t time) {
  ++frames_;
  ++syncs_;
  if (syncLength_ == length) return;
  if (syncLength_) {
    change_ = LengthChange{*syncLength_, length, time};
    cycle_.renumber();
    bytes_ = ByteMap();
  }
  syncLength_ = length;
  for (const Pair& pair : pending_) place(pair);
  pending_.clear();
}

void MulticastMeter::observeData(std::int32_t length, std::uint8_t first, std::uint8_t second,
                                 std::int64_t time) {
  ++frames_;
  cycle_.observe(length, time);
  const Pair pair{length, first, second};
  if (syncLength_) {
    place(pair);
  } else if (pending_.size() < kMaxPending) {
    pending_.push_back(pair);
  }
}

void MulticastMeter::place(const Pair& pair) {
  const int index = 2 * (pair.length - *syncLength_ - firstFrameOffset_);
  bytes_.add(index, pair.first);
  bytes_.add(index + 1, pair.second);
}

ChannelReport MulticastMeter::report() const {
  ChannelReport report;
  report.frames = frames_;
  report.syncs = syncs_;
  report.syncLength = syncLength_;
  report.lengthChange = change_;
  report.heard = bytes_.heard();
  report.contradictions = bytes_.contradictions();
  cycle_.describe(report);
  return report;
}

}  // namespace zor::receiver
