#include "receiver/capture/WifiFrame.h"

#include <cstddef>

namespace zor::receiver {
namespace {

constexpr std::uint32_t kCheckSequence = 4;

/// LLC/SNAP, IPv4 and UDP.
constexpr std::int32_t kHeaderBytes = 8 + 20 + 8;

/// The MAC header (IEEE 802.11-2020, 9.2.4): frame control, duration, three addresses, sequence control.
constexpr std::size_t kFrameControl = 2;
constexpr std::size_t kAddress1 = 4;
constexpr std::size_t kAddress2 = 10;
constexpr std::size_t kAddress3 = 16;
constexpr std::size_t kSequenceControl = 22;
constexpr std::size_t kShortHeader = 24;
constexpr std::size_t kAddressSize = 6;
constexpr std::size_t kQosControl = 2;
constexpr std::size_t kHtControl = 4;

// First byte of frame control.
constexpr int kVersionMask = 0x03;
constexpr int kTypeMask = 0x0c;
constexpr int kTypeManagement = 0x00;
constexpr int kTypeControl = 0x04;
constexpr int kTypeData = 0x08;
constexpr int kNoData = 0x40;
constexpr int kQos = 0x80;
// Second byte.
constexpr int kToDs = 0x01;
constexpr int kFromDs = 0x02;
constexpr int kMoreFragments = 0x04;
constexpr int kRetry = 0x08;
constexpr int kProtected = 0x40;
constexpr int kOrder = 0x80;  ///< In QoS frames: an HT control field follows.
// First byte of QoS control.
constexpr int kAggregate = 0x80;

constexpr std::uint32_t kFragmentMask = 0x0f;
constexpr std::uint32_t kSequenceShift = 4;

CapturedFrame ofKind(FrameKind kind) {
  CapturedFrame frame;
  frame.kind = kind;
  return frame;
}

Leg legOf(int flags) {
  switch (flags & (kToDs | kFromDs)) {
    case kToDs:
      return Leg::toAccessPoint;
    case kFromDs:
      return Leg::fromAccessPoint;
    case kToDs | kFromDs:
      return Leg::betweenAccessPoints;
    default:
      return Leg::direct;
  }
}

void readAddresses(Bytes bytes, CapturedFrame& frame) {
  const bool toDs = frame.leg == Leg::toAccessPoint || frame.leg == Leg::betweenAccessPoints;
  frame.destination = addressAt(bytes, toDs ? kAddress3 : kAddress1);
  switch (frame.leg) {
    case Leg::fromAccessPoint:
      frame.source = addressAt(bytes, kAddress3);
      break;
    case Leg::betweenAccessPoints:
      frame.source = addressAt(bytes, kShortHeader);
      break;
    default:
      frame.source = addressAt(bytes, kAddress2);
  }
}

CapturedFrame readDataFrame(Bytes bytes, std::uint32_t length, bool isHeaderPadded) {
  CapturedFrame frame;
  if (bytes.size() < kShortHeader) return frame;
  const int control = bytes[0];
  const int flags = bytes[1];
  frame.leg = legOf(flags);
  frame.isQos = (control & kQos) != 0;
  frame.isRetry = (flags & kRetry) != 0;
  frame.isProtected = (flags & kProtected) != 0;
  const std::size_t qosAt = kShortHeader + (frame.leg == Leg::betweenAccessPoints ? kAddressSize : 0);
  std::size_t header = qosAt + (frame.isQos ? kQosControl : 0);
  if (bytes.size() < header) return frame;
  if (frame.isQos && (flags & kOrder) != 0) header += kHtControl;
  if (isHeaderPadded) header = (header + 3) / 4 * 4;
  readAddresses(bytes, frame);
  const std::uint32_t sequenceControl = littleEndian16(bytes, kSequenceControl);
  frame.sequence = static_cast<std::uint16_t>(sequenceControl >> kSequenceShift);
  if ((control & kNoData) != 0) {
    frame.kind = FrameKind::noContent;
  } else if ((flags & kMoreFragments) != 0 || (sequenceControl & kFragmentMask) != 0) {
    frame.kind = FrameKind::fragment;
  } else if (frame.isQos && (bytes[qosAt] & kAggregate) != 0) {
    frame.kind = FrameKind::aggregate;
  } else if (length >= header) {
    frame.kind = FrameKind::data;
    frame.length = static_cast<std::int32_t>(length - header);
    frame.headerBytes = kHeaderBytes;
  }
  return frame;
}

}  // namespace

WifiPrefix readRadiotap(Bytes bytes) {
  // Version, padding, size, then words that say which fields follow; bit 31 says that another word does.
  constexpr std::size_t kFirstWord = 4;
  constexpr std::size_t kWord = 4;
  constexpr std::uint32_t kHasTime = 1U << 0U;
  constexpr std::uint32_t kHasFlags = 1U << 1U;
  constexpr std::uint32_t kMoreWords = 1U << 31U;
  constexpr std::size_t kTimeSize = 8;  // Also what it is aligned to.
  constexpr int kCheckSequenceFlag = 0x10;
  constexpr int kPaddedFlag = 0x20;
  constexpr int kDamagedFlag = 0x40;

  WifiPrefix prefix;
  prefix.isReadable = false;
  if (bytes.size() < kFirstWord + kWord || bytes[0] != 0) return prefix;
  prefix.size = littleEndian16(bytes, 2);
  if (prefix.size < kFirstWord + kWord || prefix.size > bytes.size()) return prefix;
  const Bytes header = bytes.first(prefix.size);
  const std::uint32_t present = littleEndian32(header, kFirstWord);
  std::size_t at = kFirstWord + kWord;
  for (std::uint32_t word = present; (word & kMoreWords) != 0; at += kWord) {
    if (header.size() < at + kWord) return prefix;
    word = littleEndian32(header, at);
  }
  prefix.isReadable = true;
  if ((present & kHasFlags) == 0) return prefix;
  if ((present & kHasTime) != 0) at = (at + kTimeSize - 1) / kTimeSize * kTimeSize + kTimeSize;
  prefix.isReadable = at < header.size();
  if (!prefix.isReadable) return prefix;
  prefix.hasCheckSequence = (header[at] & kCheckSequenceFlag) != 0;
  prefix.isHeaderPadded = (header[at] & kPaddedFlag) != 0;
  prefix.isDamaged = (header[at] & kDamagedFlag) != 0;
  return prefix;
}

WifiPrefix readPpi(Bytes bytes) {
  // Version, flags, size, link type, then fields of type, size and value.
  constexpr std::size_t kHeader = 8;
  constexpr std::size_t kFieldHeader = 4;
  constexpr std::uint32_t kWifiLinkType = 105;
  constexpr std::uint32_t kCommonField = 2;
  constexpr std::size_t kFlagsInCommonField = 8;
  constexpr std::size_t kFlagsEnd = kFlagsInCommonField + 2;
  constexpr std::uint32_t kCheckSequenceFlag = 1;
  constexpr std::uint32_t kDamagedFlag = 4;

  WifiPrefix prefix;
  prefix.isReadable = false;
  if (bytes.size() < kHeader || bytes[0] != 0 || littleEndian32(bytes, 4) != kWifiLinkType) return prefix;
  prefix.size = littleEndian16(bytes, 2);
  if (prefix.size < kHeader || prefix.size > bytes.size()) return prefix;
  const Bytes header = bytes.first(prefix.size);
  prefix.isReadable = true;
  for (std::size_t at = kHeader; at + kFieldHeader <= header.size();) {
    const std::uint32_t type = littleEndian16(header, at);
    const std::uint32_t size = littleEndian16(header, at + 2);
    at += kFieldHeader;
    if (type == kCommonField && size >= kFlagsEnd && at + kFlagsEnd <= header.size()) {
      const std::uint32_t flags = littleEndian16(header, at + kFlagsInCommonField);
      prefix.hasCheckSequence = (flags & kCheckSequenceFlag) != 0;
      prefix.isDamaged = (flags & kDamagedFlag) != 0;
    }
    at += size;
  }
  return prefix;
}

CapturedFrame readWifiFrame(Bytes bytes, std::uint32_t length, const WifiPrefix& prefix) {
  if (!prefix.isReadable || bytes.size() < kFrameControl) return ofKind(FrameKind::unreadable);
  if (prefix.isDamaged) return ofKind(FrameKind::damaged);
  if ((bytes[0] & kVersionMask) != 0) return ofKind(FrameKind::unreadable);
  const std::uint32_t checkSequence = prefix.hasCheckSequence ? kCheckSequence : 0;
  if (length < checkSequence) return ofKind(FrameKind::unreadable);
  switch (bytes[0] & kTypeMask) {
    case kTypeManagement:
      return ofKind(FrameKind::management);
    case kTypeControl:
      return ofKind(FrameKind::control);
    case kTypeData:
      return readDataFrame(bytes, length - checkSequence, prefix.isHeaderPadded);
    default:
      return ofKind(FrameKind::unreadable);
  }
}

}  // namespace zor::receiver
