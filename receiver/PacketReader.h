#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "receiver/Credentials.h"

namespace zor::receiver {

/// The fields by which a packet describes itself.
struct PacketFields {
  int ssidLength = 0;
  int passPhraseLength = 0;
  int appendLength = 0;
  int packetLength = 0;
};

/// True for a byte that runs with different credentials can be told apart by: one of the pass phrase, or of
/// the SSID if there is hardly a pass phrase. A run that corrects a mistyped pass phrase has the same SSID.
/// \param index counted from the begin of the SSID.
bool tellsRunsApart(const PacketFields& fields, int index);

/// Number of bytes in front of the SSID.
int headerLength(Encoding encoding);

/// Where the part begins that the packets of both encodings have in common: at the SSID length.
int commonBegin(Encoding encoding);

/// Reads the header of a packet.
/// \param packet at least headerLength() bytes.
/// \return nothing when no sender builds such a header.
std::optional<PacketFields> readHeader(Encoding encoding, std::span<const std::uint8_t> packet);

/// True when the packet's CRC holds.
/// \param packet at least fields.packetLength bytes.
bool crcHolds(Encoding encoding, const PacketFields& fields, std::span<const std::uint8_t> packet);

/// Takes the credentials out of a complete packet. The sender is left for the caller to fill in.
/// \param packet at least fields.packetLength bytes.
Credentials readCredentials(Encoding encoding, const PacketFields& fields,
                            std::span<const std::uint8_t> packet);

}  // namespace zor::receiver
