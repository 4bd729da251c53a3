#include "receiver/analysis/BroadcastMeter.h"

#include <algorithm>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// Sync frames follow each other within the longest interval of a pace, 255 ms; a cycle's pause may be as
/// long.
constexpr std::int64_t kSyncsWithin = 300'000;

/// What tells a run from another protocol's broadcasts where no sync frame was heard: at least this many
/// frames, of at least this many lengths, with at most this time per frame on average.
constexpr std::uint64_t kFramesOfBroadcastRun = 50;
constexpr std::size_t kLengthsOfRun = 10;
constexpr std::int64_t kMicrosecondsPerFrame = 200'000;

}  // namespace

void BroadcastMeter::observe(std::int32_t length, std::int64_t time) {
  const Frame frame{length, time, log_.latest()};
  gaps_.observe(time);
  note(frame);
  const auto shown = shownSyncLength(frame);
  if (shown && shown != syncLength_) setSyncLength(*shown, time);
  if (syncLength_) {
    measure(frame);
  } else {
    if (pending_.size() == kMaxPending) pending_.erase(pending_.begin(), pending_.begin() + kMaxPending / 2);
    pending_.push_back(frame);
  }
  previous_ = frame;
}

void BroadcastMeter::note(const Frame& frame) {
  if (frames_ == 0) {
    shortest_ = longest_ = frame.length;
    firstTime_ = frame.time;
  }
  ++frames_;
  shortest_ = std::min(shortest_, frame.length);
  longest_ = std::max(longest_, frame.length);
  lengths_.set(static_cast<std::size_t>(frame.length) % lengths_.size());
}

bool BroadcastMeter::isRun() const {
  if (syncLength_) return true;
  const std::int64_t elapsed = previous_.time - firstTime_;
  const bool isFrequent = elapsed / kMicrosecondsPerFrame < static_cast<std::int64_t>(frames_);
  return frames_ >= kFramesOfBroadcastRun && lengths_.count() >= kLengthsOfRun &&
         longest_ - shortest_ <= wire::kSync2Offset && isFrequent;
}

/// Of all frames of a cycle only sync 1 and sync 2 lie so far apart.
std::optional<std::int32_t> BroadcastMeter::shownSyncLength(const Frame& frame) const {
  const std::int64_t elapsed = frame.time - previous_.time;
  if (previous_.length < 0 || elapsed < 0 || elapsed > kSyncsWithin) return std::nullopt;
  if (frame.length - previous_.length == wire::kSync2Offset) return previous_.length;
  return std::nullopt;
}

void BroadcastMeter::setSyncLength(std::int32_t length, std::int64_t time) {
  if (syncLength_) {
    change_ = LengthChange{*syncLength_, length, time};
    cycle_.renumber();
    bytes_ = ByteMap();
  }
  syncLength_ = length;
  value_.reset();
  for (const Frame& frame : pending_) measure(frame);
  pending_.clear();
}

void BroadcastMeter::measure(const Frame& frame) {
  const int offset = frame.length - *syncLength_;
  if (offset < 0 || offset > wire::kSync2Offset) {
    ++strays_;
  } else if (offset < wire::kPositionOffset || offset == wire::kSync2Offset) {
    measureSync(offset, frame);
  } else if (offset < wire::kValueOffset) {
    measurePosition(offset - wire::kPositionOffset, frame);
  } else {
    measureValue(frame);
  }
}

void BroadcastMeter::measureValue(const Frame& frame) {
  const bool repeats = value_ && value_->length == frame.length;
  if (!repeats) ++values_;
  log_.explain(frame.place, FrameRole::value, repeats ? News::repeated : News::none);
  value_ = frame;
}

void BroadcastMeter::measureSync(int offset, const Frame& frame) {
  ++syncs_;
  log_.explain(frame.place, FrameRole::broadcastSync);
  value_.reset();
  const bool endsCycle = lastPosition_ && cycle_.isLast(lastPosition_->length);
  if (offset == wire::kSync1Offset && endsCycle) pauses_.add(frame.time - lastPosition_->time);
  lastPosition_.reset();
}

void BroadcastMeter::measurePosition(int index, const Frame& frame) {
  cycle_.observe(frame.length, frame.time);
  log_.explain(frame.place, FrameRole::position, News::none, index);
  if (value_) {
    const int value = value_->length - *syncLength_ - wire::kValueOffset;
    const News news = bytes_.add(index, static_cast<std::uint8_t>(value), frame.time);
    log_.explain(frame.place, FrameRole::position, news, index);
    log_.explain(value_->place, FrameRole::value, news, index);
  }
  value_.reset();
  lastPosition_ = frame;
}

ChannelReport BroadcastMeter::report() const {
  ChannelReport report;
  report.frames = syncLength_ ? frames_ - strays_ : frames_;
  report.syncs = syncs_;
  report.syncLength = syncLength_;
  report.lengthChange = change_;
  report.heard = bytes_.heard();
  report.heardAt = bytes_.heardAt();
  report.gaps = gaps_.counts().histogram();
  report.contradictions = bytes_.contradictions();
  if (!syncLength_) return report;
  cycle_.describe(report);
  if (cycle_.sent() > 1) {
    const double sent = 2 * static_cast<double>(cycle_.sent());
    const std::uint64_t values = std::min(values_, cycle_.sent());
    report.loss = 1 - static_cast<double>(cycle_.heard() + values) / sent;
  }
  // From one position to the next there are a value and a position, each sent once or several times.
  const std::uint64_t heard = std::max<std::uint64_t>(cycle_.heard(), 1);
  const std::uint64_t sendsOfEach = 1 + (cycle_.repeats() + heard / 2) / heard;
  if (report.intervalMs) report.intervalMs = *report.intervalMs / 2 / static_cast<double>(sendsOfEach);
  if (pauses_.count() > 0 && report.intervalMs)
    report.pauseMs = std::max(0.0, *pauses_.medianMs() - *report.intervalMs);
  return report;
}

}  // namespace zor::receiver
