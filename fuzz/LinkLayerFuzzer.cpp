#include "fuzz/Fuzz.h"
#include "receiver/capture/LinkLayer.h"

using namespace zor::receiver;

/// Any frame of any link layer is read within its bounds.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 3) return 0;
  const auto layer = static_cast<LinkLayer>(bytes[0] % (static_cast<int>(LinkLayer::wifiPpi) + 1));
  const auto length =
      static_cast<std::uint32_t>(bytes[1] << 8 | bytes[2]) * (bytes[0] >= 0x80 ? 0x10001U : 1U);
  const CapturedFrame frame = readFrame(layer, {bytes + 3, size - 3}, length);
  require(static_cast<std::size_t>(frame.kind) < kFrameKinds && static_cast<std::size_t>(frame.leg) < kLegs);
  require(frame.length >= 0 && static_cast<std::uint32_t>(frame.length) <= length);
  require(frame.kind != FrameKind::data || frame.headerBytes > 0);
  return 0;
}
