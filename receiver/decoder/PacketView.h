#pragma once

#include <optional>

#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/PacketReader.h"

namespace zor::receiver {

/// The packet of one encoding as far as it is known, with missing bytes taken from the other encoding: from
/// the SSID length to the end of the pass phrase both packets are the same. The two count as one run only
/// while no byte that both know differs and something links them (Link).
class PacketView {
 public:
  /// `own` is the evidence of the encoding that is read, `other` that of the other encoding; both must
  /// outlive the view. `interleaved`: frames of each encoding were heard between frames of the other.
  PacketView(Encoding encoding, const PacketEvidence& own, const PacketEvidence& other, bool interleaved);

  /// Fields of the packet's header, once it is known and possible.
  const std::optional<PacketFields>& fields() const { return fields_; }

  /// True when a frame was heard that lies beyond the packet's end.
  bool exceeded() const { return fields_ && own_->exceeds(fields_->packetLength); }

  /// Returns the credentials once every byte is firm and the CRC holds. `own` is what the timetables of this
  /// encoding say, `other` those of the other encoding.
  std::optional<Credentials> read(RunContinuity::Timetable own, RunContinuity::Timetable other) const;

 private:
  /// Why both encodings count as one run: bytes of both agree, or frames of one were heard between frames of
  /// the other, which says nothing once another run may have started.
  enum class Link { none, byOrder, byBytes };

  bool commonToBoth(int index) const;
  int otherIndex(int index) const;
  Link link(bool interleaved) const;

  Encoding encoding_;
  const PacketEvidence* own_;
  const PacketEvidence* other_;
  std::optional<PacketFields> fields_;
  Link link_ = Link::none;
};

}  // namespace zor::receiver
