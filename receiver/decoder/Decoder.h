#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "receiver/decoder/Credentials.h"
#include "receiver/decoder/Observation.h"

namespace zor::receiver {

/// How far the credentials of one sender are known.
struct SenderProgress {
  MacAddress sender{};
  /// The encoding of which more is known.
  Encoding encoding = Encoding::version5;
  /// Packet bytes known so far.
  int bytesKnown = 0;
  /// Packet bytes in total, 0 while unknown.
  int bytesTotal = 0;
  /// True once credentials of this sender were reported.
  bool reported = false;
};

/// Progress of every sender that has been heard with something to decode, in no particular order.
using DecoderProgress = std::vector<SenderProgress>;

/// Recovers credentials from the frames that phones send to modules outside the network.
///
/// Frames of any number of senders may be mixed, lost, repeated and delayed; frames that are not part of an
/// encoding are ignored. Credentials are reported only when the packet's CRC holds and the evidence for it is
/// consistent: the decoder waits for more frames rather than guess. Where a buffer hides the times of the
/// frames, only contradicting bytes and the CRC show that one run has directly replaced another.
///
/// Guarantees:
///  1. observe() takes bounded time and does not allocate, except for the credentials that it returns.
///  2. Memory is fixed at construction, at most kMaxBytes: kMaxSenders records. When there are more senders,
///     those have a record that are heard most, so no number of strangers keeps a phone from being heard.
///  3. Any observation is safe to pass in.
///
/// Not thread-safe: one thread at a time. Never blocks.
class Decoder {
 public:
  static constexpr std::size_t kMaxSenders = 16;
  static constexpr std::size_t kMaxBytes = 65'536;

  Decoder();
  ~Decoder();

  /// Takes the next frame; frames are passed in the order in which they were heard. Returns the credentials
  /// of the frame's sender, if this frame made them complete and they are news. With the SSID and the pass
  /// phrase last reported they are news only when they come from version 5 with other append bytes.
  std::optional<Credentials> observe(const Observation& observation);

  /// What is known so far, for a progress display. Allocates.
  DecoderProgress progress() const;

  /// For tests and benchmarks: `listener` is called, within observe(), with each packet that was complete by
  /// all evidence and stopped by nothing but its CRC, which lets one in 256 pass unless only one byte is
  /// wrong. An empty listener ends that. Survives reset().
  void setRejectionListener(std::function<void(const Rejection&)> listener);

  /// Forgets every sender.
  void reset();

 private:
  struct State;

  std::unique_ptr<State> state_;
  std::function<void(const Rejection&)> rejectionListener_;
};

}  // namespace zor::receiver
