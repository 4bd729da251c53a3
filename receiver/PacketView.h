#pragma once

#include <optional>

#include "receiver/PacketEvidence.h"
#include "receiver/PacketReader.h"

namespace zor::receiver {

/// The packet of one encoding as far as it is known, with bytes that the other encoding has told filled in:
/// from the SSID length to the end of the pass phrase both packets are the same. The two are taken for one
/// run only while all of these bytes that are known to both agree, and enough of them.
class PacketView {
 public:
  /// \param own evidence of the encoding that is read.
  /// \param other evidence of the other encoding. Both must outlive the view.
  /// \param interleaved frames of each encoding were heard between frames of the other.
  PacketView(Encoding encoding, const PacketEvidence& own, const PacketEvidence& other, bool interleaved);

  /// Fields of the packet's header, once it is known and possible.
  const std::optional<PacketFields>& fields() const { return fields_; }

  /// True when a frame was heard that the packet has no place for.
  bool exceeded() const { return fields_ && own_->exceeds(fields_->packetLength); }

  /// Takes the credentials out once every byte is known and the CRC holds.
  /// \param own what the timetables of the encoding say; \param other those of the other encoding.
  std::optional<Credentials> read(RunContinuity::Timetable own, RunContinuity::Timetable other) const;

 private:
  /// Why both encodings are taken for one run: bytes of both agree, or frames of one were heard between
  /// frames of the other, which says nothing once another run may have begun.
  enum class Link { kNone, kByOrder, kByBytes };

  bool commonToBoth(int index) const;
  int otherIndex(int index) const;
  Link link(bool interleaved) const;

  Encoding encoding_;
  const PacketEvidence* own_;
  const PacketEvidence* other_;
  std::optional<PacketFields> fields_;
  Link link_ = Link::kNone;
};

}  // namespace zor::receiver
