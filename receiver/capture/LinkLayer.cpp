#include "receiver/capture/LinkLayer.h"

#include <pcap/dlt.h>

#include <algorithm>
#include <cstddef>

#include "receiver/capture/Bytes.h"
#include "receiver/capture/WifiFrame.h"

namespace zor::receiver {
namespace {

constexpr std::uint32_t kMaxLength = 1U << 24U;  ///< No link carries longer frames.
constexpr std::int32_t kIpHeaderBytes = 20 + 8;  ///< IPv4 and UDP.
constexpr std::uint32_t kEtherTypeIpv4 = 0x0800;
constexpr std::uint32_t kEtherTypeVlan = 0x8100;

CapturedFrame dataFrame(std::uint32_t length, std::size_t header) {
  CapturedFrame frame;
  if (length < header) return frame;
  frame.kind = FrameKind::data;
  frame.length = static_cast<std::int32_t>(length - header);
  frame.headerBytes = kIpHeaderBytes;
  return frame;
}

CapturedFrame readEthernet(Bytes bytes, std::uint32_t length) {
  constexpr std::size_t kSource = 6;
  constexpr std::size_t kEtherType = 12;
  constexpr std::size_t kHeader = 14;
  constexpr std::size_t kVlanTag = 4;
  if (bytes.size() < kHeader) return {};
  const bool isTagged = bigEndian16(bytes, kEtherType) == kEtherTypeVlan;
  CapturedFrame frame = dataFrame(length, kHeader + (isTagged ? kVlanTag : 0));
  frame.destination = addressAt(bytes, 0);
  frame.source = addressAt(bytes, kSource);
  return frame;
}

/// The address of the frames that carry a datagram to this IPv4 address: RFC 1112 for a group. A single host
/// has none that follows from it.
MacAddress destinationOf(Bytes address) {
  if (std::ranges::all_of(address, [](std::uint8_t octet) { return octet == 0xff; }))
    return {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
  if (address[0] >= 224 && address[0] < 240)
    return {0x01, 0x00, 0x5e, static_cast<std::uint8_t>(address[1] & 0x7fU), address[2], address[3]};
  return {0, 0, address[0], address[1], address[2], address[3]};
}

/// Reads an IPv4 packet that starts at `header`.
CapturedFrame readIpv4(Bytes bytes, std::uint32_t length, std::size_t header) {
  constexpr std::size_t kSource = 12;
  constexpr std::size_t kDestination = 16;
  constexpr std::size_t kAddressSize = 4;
  constexpr std::size_t kIpv4Header = 20;
  if (bytes.size() < header + 1) return {};
  CapturedFrame frame;
  frame.kind = FrameKind::otherProtocol;
  if (bytes[header] >> 4 != 4) return frame;
  if (bytes.size() < header + kIpv4Header) return {};
  frame = dataFrame(length, header);
  frame.destination = destinationOf(bytes.subspan(header + kDestination, kAddressSize));
  const Bytes source = bytes.subspan(header + kSource, kAddressSize);
  frame.source = {0, 0, source[0], source[1], source[2], source[3]};
  frame.addressesAreIpv4 = true;
  return frame;
}

/// Where the fields of a Linux cooked header are.
struct CookedFormat {
  std::size_t size, protocol, packetType, addressSize, address;
  std::size_t packetTypeSize;
};
constexpr CookedFormat kCooked1{16, 14, 0, 4, 6, 2};
constexpr CookedFormat kCooked2{20, 0, 10, 11, 12, 1};

CapturedFrame readCooked(Bytes bytes, std::uint32_t length, const CookedFormat& format) {
  constexpr std::uint32_t kOutgoing = 4;
  if (bytes.size() < format.size) return {};
  CapturedFrame frame;
  frame.kind = FrameKind::otherProtocol;
  if (bigEndian16(bytes, format.protocol) != kEtherTypeIpv4) return frame;
  frame = readIpv4(bytes, length, format.size);
  if (frame.kind != FrameKind::data) return frame;
  const bool isShort = format.packetTypeSize == 1;
  const std::uint32_t type = isShort ? bytes[format.packetType] : bigEndian16(bytes, format.packetType);
  const std::uint32_t addressSize =
      isShort ? bytes[format.addressSize] : bigEndian16(bytes, format.addressSize);
  if (type == kOutgoing) frame.leg = Leg::outgoing;
  if (addressSize == frame.source.size()) {
    frame.source = addressAt(bytes, format.address);
    frame.addressesAreIpv4 = false;
  }
  return frame;
}

CapturedFrame readAfter(const WifiPrefix& prefix, Bytes bytes, std::uint32_t length) {
  if (!prefix.isReadable || length < prefix.size) return {};
  return readWifiFrame(bytes.subspan(prefix.size), length - prefix.size, prefix);
}

}  // namespace

std::optional<LinkLayer> linkLayerOf(int linkType) {
  switch (linkType) {
    case DLT_EN10MB:
      return LinkLayer::ethernet;
    case DLT_LINUX_SLL:
      return LinkLayer::linuxCooked1;
    case DLT_LINUX_SLL2:
      return LinkLayer::linuxCooked2;
    case DLT_RAW:
    case DLT_IPV4:
      return LinkLayer::rawIp;
    case DLT_IEEE802_11:
      return LinkLayer::wifi;
    case DLT_IEEE802_11_RADIO:
      return LinkLayer::wifiRadiotap;
    case DLT_PPI:
      return LinkLayer::wifiPpi;
    default:
      return std::nullopt;
  }
}

const char* nameOf(LinkLayer layer) {
  switch (layer) {
    case LinkLayer::ethernet:
      return "Ethernet";
    case LinkLayer::linuxCooked1:
      return "Linux cooked v1";
    case LinkLayer::linuxCooked2:
      return "Linux cooked v2";
    case LinkLayer::rawIp:
      return "raw IP";
    case LinkLayer::wifi:
      return "802.11";
    case LinkLayer::wifiRadiotap:
      return "802.11 radiotap";
    case LinkLayer::wifiPpi:
      return "802.11 PPI";
  }
  return "";
}

CapturedFrame readFrame(LinkLayer layer, Bytes bytes, std::uint32_t length) {
  if (length > kMaxLength) return {};
  // What was kept cannot be longer than the frame was.
  bytes = bytes.first(std::min<std::size_t>(bytes.size(), length));
  switch (layer) {
    case LinkLayer::ethernet:
      return readEthernet(bytes, length);
    case LinkLayer::linuxCooked1:
      return readCooked(bytes, length, kCooked1);
    case LinkLayer::linuxCooked2:
      return readCooked(bytes, length, kCooked2);
    case LinkLayer::rawIp:
      return readIpv4(bytes, length, 0);
    case LinkLayer::wifi:
      return readWifiFrame(bytes, length, {});
    case LinkLayer::wifiRadiotap:
      return readAfter(readRadiotap(bytes), bytes, length);
    case LinkLayer::wifiPpi:
      return readAfter(readPpi(bytes), bytes, length);
  }
  return {};
}

}  // namespace zor::receiver
