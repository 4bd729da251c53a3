#pragma once

#include <cstdint>

#include "receiver/capture/Bytes.h"
#include "receiver/capture/CapturedFrame.h"

namespace zor::receiver {

/// What a capture's own header says about the 802.11 frame after it.
struct WifiPrefix {
  std::uint32_t size = 0;         ///< Bytes before the frame.
  bool isReadable = true;         ///< The header makes sense.
  bool hasCheckSequence = false;  ///< The frame ends in its frame check sequence.
  bool isDamaged = false;         ///< That check sequence was wrong.
  bool isHeaderPadded = false;    ///< The frame's header is padded to a multiple of four bytes.
};

/// Reads a radiotap header.
WifiPrefix readRadiotap(Bytes bytes);

/// Reads a per-packet information header.
WifiPrefix readPpi(Bytes bytes);

/// Reads an 802.11 frame. `bytes` is what the capture kept of it, `length` how long it was, both without the
/// prefix.
CapturedFrame readWifiFrame(Bytes bytes, std::uint32_t length, const WifiPrefix& prefix);

}  // namespace zor::receiver
