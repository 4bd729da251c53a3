#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "receiver/Credentials.h"
#include "receiver/Observation.h"

namespace zor::receiver {

class SenderRecord;

/// How far the credentials of one sender are known.
struct SenderProgress {
  MacAddress sender{};
  /// The encoding of which more is known.
  Encoding encoding = Encoding::kVersion5;
  /// Packet bytes known so far.
  int bytesKnown = 0;
  /// Packet bytes there are, 0 while unknown.
  int bytesTotal = 0;
  /// True once credentials of this sender were reported.
  bool reported = false;
};

/// Progress of every sender that has been heard with something to decode, in no particular order.
using DecoderProgress = std::vector<SenderProgress>;

/// Recovers credentials from the frames that phones send to modules outside the network.
///
/// Frames of any number of senders may be mixed, lost, repeated and delayed; what is no part of an encoding
/// is ignored. Credentials are reported only when the packet's CRC holds and the evidence for it is
/// consistent: a doubtful packet is waited for, never guessed. Where a buffer takes the frames' times away, a
/// run that takes the place of another at once is told by bytes that contradict and by the CRC alone.
///
/// Guarantees:
///  1. observe() takes bounded time and does not allocate, except for the credentials that it returns.
///  2. Memory is fixed at construction: kMaxSenders records; when one more sender is heard, the one that was
///     silent longest is forgotten, those that were hardly heard at all first.
///  3. Any observation whatsoever is safe to pass in.
///
/// Not thread-safe: one thread at a time. Never blocks. A decoder that was moved from is only good for being
/// assigned to or destroyed.
class Decoder {
 public:
  static constexpr std::size_t kMaxSenders = 16;

  Decoder();
  ~Decoder();
  Decoder(Decoder&&) noexcept;
  Decoder& operator=(Decoder&&) noexcept;

  /// Takes the next frame from the air; frames are passed in the order in which they were heard.
  /// \return the credentials of the frame's sender, if this frame made them complete and they are news. What
  /// repeats the SSID and the pass phrase last reported is news only when version 5 tells other append bytes.
  std::optional<Credentials> observe(const Observation& observation);

  /// What is known so far, for a progress display. Allocates.
  DecoderProgress progress() const;

  /// Forgets every sender.
  void reset();

 private:
  SenderRecord& recordOf(const Observation& observation);

  std::unique_ptr<SenderRecord[]> records_;
};

}  // namespace zor::receiver
