#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "receiver/decoder/Credentials.h"

namespace zor::receiver {

/// The fields by which a packet describes itself.
struct PacketFields {
  int ssidLength = 0;
  int passPhraseLength = 0;
  int appendLength = 0;
  int packetLength = 0;
};

/// True when the byte at `index`, counted from the start of the SSID, is likely to differ between runs with
/// different credentials: a byte of the pass phrase, or of either text if the pass phrase is very short. A
/// run that corrects a mistyped pass phrase repeats the SSID.
bool distinguishesRuns(const PacketFields& fields, int index);

/// Number of bytes before the SSID.
int headerLength(Encoding encoding);

/// Index of the SSID length, where the part starts that the packets of both encodings have in common.
int commonStart(Encoding encoding);

/// Reads the header of a packet of at least headerLength() bytes. Returns nothing when no sender builds such
/// a header.
std::optional<PacketFields> readHeader(Encoding encoding, std::span<const std::uint8_t> packet);

/// True when the CRC of a packet of at least fields.packetLength bytes holds.
bool crcHolds(Encoding encoding, const PacketFields& fields, std::span<const std::uint8_t> packet);

/// Takes the credentials out of a packet of at least fields.packetLength bytes. The caller fills in the
/// sender.
Credentials readCredentials(Encoding encoding, const PacketFields& fields,
                            std::span<const std::uint8_t> packet);

}  // namespace zor::receiver
