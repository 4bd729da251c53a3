#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "ZOR/smartconfig/Air.h"

/// One frame as a schedule sent it: the instant in virtual milliseconds, where to, how long.
struct Frame {
  std::int64_t ms;
  std::string destination;
  std::int32_t length;

  bool operator==(const Frame&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Frame& frame) {
  return out << frame.ms << " ms " << frame.destination << " " << frame.length << " bytes";
}

/// Records frames in virtual time. `onFrame` is asked for each frame's result and may cancel the run
/// or change tunables.
class RecordingAir final : public zor::Air {
 public:
  bool cancelled() override { return isCancelled; }

  std::int32_t send(const char* destination, std::int32_t length) override {
    frames.push_back({now, destination, length});
    return onFrame ? onFrame(frames.back()) : length;
  }

  void wait(const ZorTunable& interval) override { wait(std::int32_t{interval}); }
  void wait(std::int32_t milliseconds) override {
    if (!isCancelled && milliseconds > 0) now += milliseconds;
  }

  std::vector<std::int32_t> lengths() const {
    std::vector<std::int32_t> result;
    for (const Frame& frame : frames) result.push_back(frame.length);
    return result;
  }

  std::function<std::int32_t(const Frame&)> onFrame;
  bool isCancelled = false;
  std::int64_t now = 0;
  std::vector<Frame> frames;
};
