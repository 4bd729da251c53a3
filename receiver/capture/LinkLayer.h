#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "receiver/capture/CapturedFrame.h"

namespace zor::receiver {

/// What the bytes of a captured frame begin with.
enum class LinkLayer : std::uint8_t {
  ethernet,
  linuxCooked1,
  linuxCooked2,
  rawIp,
  wifi,          ///< IEEE 802.11 without anything before it.
  wifiRadiotap,  ///< After a radiotap header.
  wifiPpi,       ///< After a per-packet information header.
};

/// The link layer of a libpcap link type (DLT_...), if this program reads it.
std::optional<LinkLayer> linkLayerOf(int linkType);

/// A name for messages and JSON, such as "802.11 radiotap".
const char* nameOf(LinkLayer layer);

/// Reads one frame. `bytes` is what the capture kept of it, `length` how long it was. Reads headers only,
/// never what is encrypted. Any bytes are safe. The time stays 0.
CapturedFrame readFrame(LinkLayer layer, std::span<const std::uint8_t> bytes, std::uint32_t length);

}  // namespace zor::receiver
