#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zor::bench {

/// One UDP datagram as it arrived: nanoseconds by the kernel's stamp, destination, length.
struct CapturedFrame {
  std::int64_t ns;
  std::string destination;
  std::int32_t length;
};

/// Captures the smart configuration datagrams that arrive at an interface, stamped by the kernel. They wait
/// in the socket's buffer, which holds some 200: call `drain` twice a second.
class FrameCapture {
 public:
  /// Ends the process when it may not capture.
  explicit FrameCapture(const std::string& interface);
  ~FrameCapture();
  FrameCapture(const FrameCapture&) = delete;
  FrameCapture& operator=(const FrameCapture&) = delete;

  /// Takes what has arrived so far.
  void drain();

  /// Drains for as long as `seconds`.
  void drainFor(double seconds);

  /// What was taken, multicasts or broadcasts.
  std::vector<CapturedFrame> frames(bool multicast) const;

 private:
  bool receiveOne();

  int descriptor_;
  std::vector<CapturedFrame> multicasts_;
  std::vector<CapturedFrame> broadcasts_;
};

}  // namespace zor::bench
