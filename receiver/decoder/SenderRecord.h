#pragma once

#include <cstdint>
#include <optional>

#include "receiver/decoder/BroadcastChannel.h"
#include "receiver/decoder/Decoder.h"
#include "receiver/decoder/MulticastChannel.h"
#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/PacketReader.h"

namespace zor::receiver {

/// Everything known of one sender.
class SenderRecord {
 public:
  SenderRecord();

  /// Forgets everything and is given to another sender.
  void assign(const MacAddress& sender);

  const MacAddress& sender() const { return sender_; }
  bool used() const { return used_; }
  std::int64_t lastHeard() const { return lastHeard_; }

  /// True until enough frames were heard to believe that the sender is worth a record.
  bool onProbation() const { return framesHeard_ < kProbationFrames; }

  /// Takes a broadcast or an IPv4 multicast of this sender. Returns the credentials when it made them
  /// complete and they are news.
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
  PacketEvidence version5_{Encoding::version5};
  PacketEvidence version3_{Encoding::version3};
  MulticastChannel version5Multicast_{kVersion5Multicast};
  MulticastChannel version3Multicast_{kVersion3Multicast};
  BroadcastChannel broadcast_;
  std::optional<Encoding> lastEncoding_;
  int encodingChanges_ = 0;
  std::optional<Credentials> reported_;
  std::optional<unsigned> settledVersion5_;  ///< changes() when credentials were last read.
  std::optional<unsigned> settledVersion3_;
};

}  // namespace zor::receiver
