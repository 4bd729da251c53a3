#include "cli/FramePicture.h"

#include <algorithm>

namespace zor::cli {
namespace {

using receiver::FrameRole;
using receiver::LoggedFrame;

constexpr std::int64_t kShortest = 1'000'000;
constexpr std::int64_t kLongest = 10'000'000;
constexpr std::int64_t kLongestCompletion = 3600'000'000;

// Steps to which times are rounded without secrets, microseconds. A broadcast that no sync frame explains may
// be a value.
constexpr std::int64_t kStep = 1'000;
constexpr std::int64_t kStepOfOther = 10'000;

std::int64_t rounded(std::int64_t time, std::int64_t step) {
  return (time + step / 2) / step * step;
}

/// Takes away what the bytes of the packet can be read from.
void hideSecrets(std::vector<LoggedFrame>& frames) {
  std::int64_t previous = frames.empty() ? 0 : frames.front().timeMicroseconds;
  auto next = frames.begin();  // The frame itself or the first after it that is no value.
  for (LoggedFrame& frame : frames) {
    while (next != frames.end() && (&*next < &frame || next->role == FrameRole::value)) ++next;
    frame.destination = {};
    frame.length = 0;
    std::int64_t time = frame.timeMicroseconds;
    if (frame.role == FrameRole::value)
      time = next == frames.end() ? previous : previous + (next->timeMicroseconds - previous) / 2;
    frame.timeMicroseconds = rounded(time, frame.role == FrameRole::other ? kStepOfOther : kStep);
    previous = frame.timeMicroseconds;
  }
}

}  // namespace

std::vector<LoggedFrame> pictureFrames(const receiver::LegReport& leg, std::int64_t start, bool showSecrets) {
  std::vector<LoggedFrame> frames = leg.log;
  for (LoggedFrame& frame : frames) frame.timeMicroseconds -= start;
  if (!showSecrets) hideSecrets(frames);
  return frames;
}

PictureRange pictureRange(const receiver::LegReport& leg, std::int64_t start) {
  const std::int64_t from = std::max<std::int64_t>((leg.firstMicroseconds - start) / kStep * kStep, 0);
  std::int64_t length = kLongest;
  if (leg.completion) {
    const std::int64_t needed = leg.completion->timeMicroseconds - leg.firstMicroseconds;
    length = 2 * std::clamp(needed, kShortest / 2, kLongestCompletion);
  }
  const std::int64_t last = leg.log.empty() ? from : leg.log.back().timeMicroseconds - start;
  return {from, rounded(std::max(std::min(from + length, last), from), kStep) + kStep};
}

RoleCounts countRoles(const std::vector<LoggedFrame>& frames) {
  RoleCounts counts{};
  for (const LoggedFrame& frame : frames) ++counts[static_cast<std::size_t>(frame.role)];
  return counts;
}

bool isRowShown(FrameRole role, const RoleCounts& counts) {
  return role < FrameRole::version3Sync || counts[static_cast<std::size_t>(role)] > 0;
}

}  // namespace zor::cli
