#include "receiver/decoder/PacketView.h"

#include <array>
#include <cstdint>

namespace zor::receiver {
namespace {

/// Text bytes that both encodings must know, with the same values.
constexpr int kBytesToLink = 3;

Encoding otherOf(Encoding encoding) {
  return encoding == Encoding::version5 ? Encoding::version3 : Encoding::version5;
}

}  // namespace

PacketView::PacketView(Encoding encoding, const PacketEvidence& own, const PacketEvidence& other,
                       bool interleaved)
    : encoding_(encoding), own_(&own), other_(&other) {
  std::array<std::uint8_t, wire::kVersion5Payload> header{};
  bool borrowed = false;
  for (int index = 0; index < headerLength(encoding_); ++index) {
    const auto slot = static_cast<std::size_t>(index);
    if (own_->known(index)) {
      header[slot] = own_->byte(index);
    } else if (index >= commonStart(encoding_) && other_->known(otherIndex(index))) {
      header[slot] = other_->byte(otherIndex(index));
      borrowed = true;
    } else {
      return;
    }
  }
  fields_ = readHeader(encoding_, header);
  if (fields_) link_ = link(interleaved);
  if (borrowed && link_ == Link::none) fields_.reset();
}

int PacketView::otherIndex(int index) const {
  return index - commonStart(encoding_) + commonStart(otherOf(encoding_));
}

bool PacketView::commonToBoth(int index) const {
  return index >= commonStart(encoding_) &&
         index < headerLength(encoding_) + fields_->ssidLength + fields_->passPhraseLength;
}

PacketView::Link PacketView::link(bool interleaved) const {
  int agreed = 0;
  for (int index = commonStart(encoding_); commonToBoth(index); ++index) {
    if (!own_->known(index) || !other_->known(otherIndex(index))) continue;
    if (own_->byte(index) != other_->byte(otherIndex(index))) return Link::none;
    if (distinguishesRuns(*fields_, index - headerLength(encoding_))) ++agreed;
  }
  if (agreed >= kBytesToLink) return Link::byBytes;
  return interleaved ? Link::byOrder : Link::none;
}

std::optional<Credentials> PacketView::read(RunContinuity::Timetable own,
                                            RunContinuity::Timetable other) const {
  if (!fields_) return std::nullopt;
  const bool ofOneRun = own_->ofOneRun(own) && other_->ofOneRun(other);
  const bool joined = link_ == Link::byBytes || (link_ == Link::byOrder && ofOneRun);
  std::array<std::uint8_t, wire::kMaxPacketBytes> packet{};
  for (int index = 0; index < fields_->packetLength; ++index) {
    const auto slot = static_cast<std::size_t>(index);
    if (own_->firm(index, own)) {
      packet[slot] = own_->byte(index);
    } else if (joined && commonToBoth(index) && other_->firm(otherIndex(index), other)) {
      packet[slot] = other_->byte(otherIndex(index));
    } else {
      return std::nullopt;
    }
  }
  if (!crcHolds(encoding_, *fields_, packet)) return std::nullopt;
  return readCredentials(encoding_, *fields_, packet);
}

}  // namespace zor::receiver
