#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zor::bench {

/// One UDP datagram as it arrived.
struct CapturedFrame {
  std::int64_t timeNs;      ///< By the kernel's stamp.
  std::string destination;  ///< Dotted-quad address or group.
  std::int32_t length;      ///< Of the datagram, bytes.
};

/// Captures the smart configuration datagrams that arrive at an interface, stamped by the kernel. They wait
/// in the socket's buffer, which holds about 200: call `drain` twice a second.
class FrameCapture {
 public:
  /// Ends the process when capturing is not allowed.
  explicit FrameCapture(const std::string& interface);
  ~FrameCapture();
  FrameCapture(const FrameCapture&) = delete;
  FrameCapture& operator=(const FrameCapture&) = delete;

  /// Takes the datagrams that have arrived so far.
  void drain();

  /// Blocks for `seconds` and drains meanwhile.
  void drainFor(double seconds);

  /// Returns the multicasts, or the broadcasts, in the order of their arrival.
  std::vector<CapturedFrame> frames(bool multicast) const;

 private:
  bool receiveOne();

  int descriptor_;
  std::vector<CapturedFrame> multicasts_;
  std::vector<CapturedFrame> broadcasts_;
};

}  // namespace zor::bench
