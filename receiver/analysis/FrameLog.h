#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "receiver/capture/CapturedFrame.h"

namespace zor::receiver {

/// What a frame is sent for.
enum class FrameRole : std::uint8_t {
  multicastSync,
  multicastData,
  broadcastSync,
  value,     ///< A broadcast whose length is a byte of the packet.
  position,  ///< A broadcast that says which byte.
  version3Sync,
  version3Data,
  other,  ///< A broadcast that is none of these, or that no sync frame explains.
};
inline constexpr std::size_t kFrameRoles = 8;

/// What a frame says about the packet, more important ones last. A value and its position say it together.
enum class News : std::uint8_t {
  none,      ///< No byte: a sync frame, or one that cannot be read without another that is missing.
  repeated,  ///< A byte that the channel has shown before.
  fresh,
  contradicting,  ///< A byte that the channel has shown with another value.
};
inline constexpr std::size_t kNews = 4;

/// A frame and what it turned out to mean.
struct LoggedFrame {
  std::int64_t timeMicroseconds = 0;
  std::uint64_t number = 0;  ///< In the capture, from 1.
  std::int32_t length = 0;
  MacAddress destination{};
  FrameRole role = FrameRole::other;
  News news = News::none;
  std::int16_t offset = -1;  ///< Of the packet byte, or of the first of two; -1 while none is known.
};

/// Keeps the first frames of a sender on one leg for pictures. What a frame means may become clear later.
class FrameLog {
 public:
  /// Keeps up to `limit` frames.
  explicit FrameLog(std::size_t limit) : limit_(limit) {}

  void add(const CapturedFrame& frame, std::uint64_t number) {
    latest_ = count_++;
    if (latest_ < limit_)
      frames_.push_back({frame.timeMicroseconds, number, frame.length, frame.destination});
  }

  /// The place of the frame added last.
  std::size_t latest() const { return latest_; }

  /// Says what the frame at a place means. A place that is not kept is ignored.
  void explain(std::size_t place, FrameRole role, News news = News::none, int offset = -1) {
    if (place >= frames_.size()) return;
    frames_[place].role = role;
    frames_[place].news = news;
    frames_[place].offset = static_cast<std::int16_t>(offset);
  }

  const std::vector<LoggedFrame>& frames() const { return frames_; }

  /// How many frames came after those.
  std::uint64_t leftOut() const { return count_ - frames_.size(); }

 private:
  std::size_t limit_;
  std::size_t count_ = 0;
  std::size_t latest_ = 0;
  std::vector<LoggedFrame> frames_;
};

}  // namespace zor::receiver
