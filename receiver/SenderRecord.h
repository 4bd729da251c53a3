#pragma once

#include <cstdint>
#include <optional>

#include "receiver/BroadcastChannel.h"
#include "receiver/Decoder.h"
#include "receiver/MulticastChannel.h"
#include "receiver/PacketEvidence.h"
#include "receiver/PacketReader.h"

namespace zor::receiver {

/// Everything known of one sender.
class SenderRecord {
 public:
  SenderRecord();

  /// Forgets everything and belongs to another sender from now on.
  void assign(const MacAddress& sender);

  const MacAddress& sender() const { return sender_; }
  bool used() const { return used_; }
  std::int64_t lastHeard() const { return lastHeard_; }

  /// True until enough frames were heard to think that the sender has something to say.
  bool onProbation() const { return framesHeard_ < kProbationFrames; }

  /// Takes a broadcast or an IPv4 multicast of this sender.
  /// \return credentials when they became complete and are news.
  std::optional<Credentials> observe(const Observation& observation);

  /// True when there is anything to show.
  bool hasProgress() const;
  SenderProgress progress() const;

 private:
  static constexpr unsigned kProbationFrames = 4;

  void read(const Observation& observation);
  void passOnRestarts();
  void shareTimelessness();
  void findBases();
  void noteOrder(unsigned version5Frames, unsigned version3Frames);
  std::optional<Credentials> complete();
  RunContinuity::Timetable version5Timetable(const PacketFields& fields) const;
  RunContinuity::Timetable version3Timetable(const PacketFields& fields) const;
  bool isNews(const Credentials& credentials) const;

  MacAddress sender_{};
  bool used_ = false;
  std::int64_t lastHeard_ = 0;
  unsigned framesHeard_ = 0;
  PacketEvidence version5_{Encoding::kVersion5};
  PacketEvidence version3_{Encoding::kVersion3};
  MulticastChannel version5Multicast_{kVersion5Multicast};
  MulticastChannel version3Multicast_{kVersion3Multicast};
  BroadcastChannel broadcast_;
  std::optional<Encoding> lastEncoding_;
  int encodingChanges_ = 0;
  std::optional<Credentials> reported_;
  // What was read stays as it is while nothing changes.
  std::optional<unsigned> settledVersion5_;
  std::optional<unsigned> settledVersion3_;
};

}  // namespace zor::receiver
