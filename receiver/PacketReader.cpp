#include "receiver/PacketReader.h"

#include "receiver/Crc8.h"
#include "receiver/WireConstants.h"

namespace zor::receiver {

bool tellsRunsApart(const PacketFields& fields, int index) {
  constexpr int kShortestTellingPassPhrase = 3;
  const int begin = fields.passPhraseLength >= kShortestTellingPassPhrase ? fields.ssidLength : 0;
  return index >= begin && index < fields.ssidLength + fields.passPhraseLength;
}

int headerLength(Encoding encoding) {
  return encoding == Encoding::kVersion5 ? wire::kVersion5Payload : wire::kVersion3Texts;
}

int commonBegin(Encoding encoding) {
  return encoding == Encoding::kVersion5 ? wire::kVersion5SsidLength : wire::kVersion3SsidLength;
}

std::optional<PacketFields> readHeader(Encoding encoding, std::span<const std::uint8_t> packet) {
  PacketFields fields;
  if (encoding == Encoding::kVersion5) {
    fields.appendLength = packet[wire::kVersion5Head] - wire::kHeadBias;
    fields.ssidLength = packet[wire::kVersion5SsidLength];
    fields.passPhraseLength = packet[wire::kVersion5PassPhraseLength];
  } else {
    fields.ssidLength = packet[wire::kVersion3SsidLength];
    fields.passPhraseLength = packet[wire::kVersion3PassPhraseLength];
  }
  fields.packetLength =
      headerLength(encoding) + fields.ssidLength + fields.passPhraseLength + fields.appendLength;
  const bool possible = fields.appendLength >= 0 && fields.appendLength <= wire::kMaxAppend &&
                        fields.ssidLength <= wire::kMaxSsid &&
                        fields.passPhraseLength <= wire::kMaxPassPhrase &&
                        fields.packetLength <= wire::kMaxPacketBytes;
  if (!possible) return std::nullopt;
  return fields;
}

bool crcHolds(Encoding encoding, const PacketFields& fields, std::span<const std::uint8_t> packet) {
  const auto length = static_cast<std::size_t>(fields.packetLength);
  const bool version5 = encoding == Encoding::kVersion5;
  const std::size_t begin = version5 ? wire::kVersion5Payload : wire::kVersion3SsidLength;
  const std::uint8_t crc = packet[version5 ? wire::kVersion5Crc : wire::kVersion3Crc];
  return crc8(packet.data() + begin, length - begin) == crc;
}

Credentials readCredentials(Encoding encoding, const PacketFields& fields,
                            std::span<const std::uint8_t> packet) {
  const auto ssid = packet.begin() + headerLength(encoding);
  const auto passPhrase = ssid + fields.ssidLength;
  const auto append = passPhrase + fields.passPhraseLength;
  Credentials credentials;
  credentials.ssid.assign(ssid, passPhrase);
  credentials.passPhrase.assign(passPhrase, append);
  credentials.append.assign(append, append + fields.appendLength);
  credentials.encoding = encoding;
  return credentials;
}

}  // namespace zor::receiver
