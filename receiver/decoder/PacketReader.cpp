#include "receiver/decoder/PacketReader.h"

#include "receiver/decoder/Crc8.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {

bool distinguishesRuns(const PacketFields& fields, int index) {
  constexpr int kMinDistinctivePassPhrase = 3;
  const int start = fields.passPhraseLength >= kMinDistinctivePassPhrase ? fields.ssidLength : 0;
  return index >= start && index < fields.ssidLength + fields.passPhraseLength;
}

int headerLength(Encoding encoding) {
  return encoding == Encoding::version5 ? wire::kVersion5Payload : wire::kVersion3Texts;
}

int commonStart(Encoding encoding) {
  return encoding == Encoding::version5 ? wire::kVersion5SsidLength : wire::kVersion3SsidLength;
}

std::optional<PacketFields> readHeader(Encoding encoding, std::span<const std::uint8_t> packet) {
  PacketFields fields;
  if (encoding == Encoding::version5) {
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
  const bool version5 = encoding == Encoding::version5;
  const std::size_t start = version5 ? wire::kVersion5Payload : wire::kVersion3SsidLength;
  const std::uint8_t crc = packet[version5 ? wire::kVersion5Crc : wire::kVersion3Crc];
  return crc8(packet.data() + start, length - start) == crc;
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
