#include "receiver/analysis/MulticastMeter.h"

#include <algorithm>

namespace zor::receiver {

void MulticastMeter::observeSync(std::int32_t length, std::int64_t time) {
  ++frames_;
  ++syncs_;
  gaps_.observe(time);
  log_.explain(log_.latest(), form_.sync);
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
  gaps_.observe(time);
  log_.explain(log_.latest(), form_.data);
  const Pair pair{length, first, second, time, log_.latest()};
  if (syncLength_) {
    place(pair);
  } else if (pending_.size() < kMaxPending) {
    pending_.push_back(pair);
  }
}

void MulticastMeter::place(const Pair& pair) {
  const int index = 2 * (pair.length - *syncLength_ - form_.firstFrameOffset);
  const News first = bytes_.add(index, pair.first, pair.time);
  const News second = bytes_.add(index + 1, pair.second, pair.time);
  const bool isInPacket = index >= 0 && index < static_cast<int>(kMaxPacketSize);
  log_.explain(pair.place, form_.data, std::max(first, second), isInPacket ? index : -1);
}

ChannelReport MulticastMeter::report() const {
  ChannelReport report;
  report.frames = frames_;
  report.syncs = syncs_;
  report.syncLength = syncLength_;
  report.lengthChange = change_;
  report.heard = bytes_.heard();
  report.heardAt = bytes_.heardAt();
  report.gaps = gaps_.counts().histogram();
  report.contradictions = bytes_.contradictions();
  cycle_.describe(report);
  return report;
}

}  // namespace zor::receiver
