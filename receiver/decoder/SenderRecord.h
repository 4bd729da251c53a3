#pragma once

#include <cstdint>
#include <optional>

#include "receiver/decoder/BroadcastChannel.h"
#include "receiver/decoder/Decoder.h"
#include "receiver/decoder/MulticastChannel.h"
#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/TwoOverheads.h"

namespace zor::receiver {

/// Everything known of one sender.
class SenderRecord {
 public:
  /// Takes a broadcast or a multicast frame of an encoding. Returns the credentials when it made them
  /// complete and they are news. A packet that nothing but its CRC has stopped goes to `rejected`, unless
  /// that is null. The caller fills in the sender.
  std::optional<Credentials> observe(const Observation& observation, std::optional<Rejection>* rejected);

  /// True when there is anything to show.
  bool hasProgress() const { return evidence_.knownCount() > 0; }

  /// True once half of a packet is known: the sender is a phone.
  bool isPromising() const;

  /// The caller fills in the sender.
  SenderProgress progress() const;

 private:
  std::optional<Credentials> conclude(std::optional<Rejection>* rejected);
  MulticastChannel& channelOf(const GroupOctets& group);
  void forget();
  void read(const Observation& frame);
  bool readSingle(const Observation& frame);
  void shareTimelessness();
  void noteSilence(const CycleClock& clock, Source source);
  void findBases();
  bool mayBeMadeUp(Encoding encoding) const;
  std::optional<Credentials> complete(std::optional<Rejection>* rejected);
  Timetables timetables(const PacketFields& fields) const;
  Timetable judgeVersion5(const PacketFields& fields) const;
  Timetable judgeVersion3(const PacketFields& fields) const;
  Timetable judgeMix(const PacketFields& fields) const;
  bool isNews(const Credentials& credentials);

  TwoOverheads overheads_;
  PacketEvidence evidence_;
  MulticastChannel version5_{kVersion5Multicast};
  MulticastChannel version3_{kVersion3Multicast};
  BroadcastChannel broadcast_;
  bool timeless_ = false;
  std::optional<std::size_t> reportedTexts_;  ///< A hash.
  std::optional<std::size_t> reportedAppend_;
  std::optional<unsigned> settledVersion5_;  ///< changes() when credentials were last read.
  std::optional<unsigned> settledVersion3_;
};

}  // namespace zor::receiver
