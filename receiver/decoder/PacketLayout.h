#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "receiver/decoder/Credentials.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {

/// The packets of both encodings are the same from the SSID length to the end of the pass phrase. So what a
/// sender says is one row of pieces: the bytes of the version 5 packet by their index, and the CRC of the
/// version 3 packet.
inline constexpr int kVersion3CrcPiece = wire::kMaxPacketBytes;
inline constexpr int kPieces = wire::kMaxPacketBytes + 1;

/// The piece that is byte `index` of a packet; kPieces or more when there is none.
constexpr int pieceOf(Encoding encoding, int index) {
  if (encoding == Encoding::version5) return index < wire::kMaxPacketBytes ? index : kPieces;
  if (index == wire::kVersion3Crc) return kVersion3CrcPiece;
  const int piece = index - wire::kVersion3SsidLength + wire::kVersion5SsidLength;
  return piece < wire::kMaxPacketBytes ? piece : kPieces;
}

/// Number of multicast frames that carry a packet of `length` bytes.
constexpr int framesOf(int length) {
  return (length + 1) / 2;
}

/// The lengths by which a packet describes itself, in bytes.
struct PacketFields {
  int ssidLength = 0;
  int passPhraseLength = 0;
  int appendLength = 0;  ///< 0 in version 3.

  /// Length of the packet in this encoding.
  int packetLength(Encoding encoding) const;

  /// True for a byte of the pass phrase, or of either text if the pass phrase is very short: it is likely to
  /// differ between runs with different credentials. A run that corrects a mistyped pass phrase repeats the
  /// SSID.
  bool distinguishesRuns(int piece) const;
};

/// Reads the lengths; `head` is the first byte of a version 5 packet, nothing for version 3. Returns nothing
/// when no sender builds such a packet.
std::optional<PacketFields> readFields(std::optional<std::uint8_t> head, std::uint8_t ssidLength,
                                       std::uint8_t passPhraseLength);

/// True when the CRC of a packet of fields.packetLength(encoding) bytes holds.
bool crcHolds(Encoding encoding, std::span<const std::uint8_t> packet);

/// Takes the credentials out of a packet of fields.packetLength(encoding) bytes. The caller fills in the
/// sender.
Credentials readCredentials(Encoding encoding, const PacketFields& fields,
                            std::span<const std::uint8_t> packet);

}  // namespace zor::receiver
