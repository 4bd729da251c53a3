#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "receiver/analysis/LegMeter.h"
#include "receiver/analysis/Report.h"
#include "receiver/decoder/Decoder.h"

namespace zor::receiver {

/// Takes the frames of a capture one after the other, decodes and measures what phones send, and reports it
/// at any time. Memory does not grow with the number of frames: of more than kMaxSenders senders those are
/// forgotten first that sent nothing but broadcasts, and of these the one silent longest. Of the frames
/// themselves it keeps only the first of each sender and leg, and only if asked.
///
/// Not thread-safe. Never blocks.
class Analysis {
 public:
  static constexpr std::size_t kMaxSenders = 64;

  /// Keeps the first `framesKept` frames of each sender on each leg, for pictures.
  explicit Analysis(std::size_t framesKept = 0);
  ~Analysis();
  Analysis(const Analysis&) = delete;
  Analysis& operator=(const Analysis&) = delete;

  /// Takes the next frame. Returns the credentials that it made complete on its leg, if they are news; valid
  /// until the next call.
  const Completion* observe(const CapturedFrame& frame);

  /// Frames so far.
  std::uint64_t frames() const { return totals_.frames; }

  CaptureReport report() const;

 private:
  /// What a sender is worth when there is no room for another.
  enum class Worth : std::uint8_t {
    onlyBroadcasts,  ///< As any device sends.
    groups,          ///< Frames to the groups of smart configuration.
    run,             ///< Nothing but smart configuration.
  };

  /// Everything of one sender.
  struct Sender {
    Worth worth = Worth::onlyBroadcasts;
    std::array<std::unique_ptr<LegMeter>, kLegs> legs;
    std::vector<Completion> completions;
    std::uint64_t unicasts = 0;
    std::uint64_t firstFrame = 0;
    bool addressIsIpv4 = false;
  };
  static constexpr std::size_t kMaxCompletions = 16;

  const Completion* observeData(const CapturedFrame& frame);
  const Completion* decode(const CapturedFrame& frame, Sender& sender);
  std::size_t slotOf(std::uint64_t key) const;
  Sender& senderOf(const CapturedFrame& frame);
  std::size_t makeRoom();
  static void appraise(Sender& sender, Destination destination);
  static SenderReport report(const MacAddress& address, const Sender& sender);

  std::size_t framesKept_;
  CaptureReport totals_;                                  ///< Without senders.
  std::array<std::unique_ptr<Decoder>, kLegs> decoders_;  ///< A sender's lengths may differ between legs.
  // Parallel arrays: the addresses are looked through for every frame.
  std::array<std::uint64_t, kMaxSenders> keys_{};  ///< Addresses as numbers.
  std::array<std::int64_t, kMaxSenders> lastHeard_{};
  std::array<Sender, kMaxSenders> senders_;
  std::size_t used_ = 0;
  std::size_t latest_ = 0;  ///< Slot of the sender heard last.
};

}  // namespace zor::receiver
