#include "receiver/decoder/PacketLayout.h"

#include "receiver/decoder/Crc8.h"

namespace zor::receiver {
namespace {

int headerLength(Encoding encoding) {
  return encoding == Encoding::version5 ? wire::kVersion5Payload : wire::kVersion3Texts;
}

}  // namespace

int PacketFields::packetLength(Encoding encoding) const {
  const int append = encoding == Encoding::version5 ? appendLength : 0;
  return headerLength(encoding) + ssidLength + passPhraseLength + append;
}

bool PacketFields::distinguishesRuns(int piece) const {
  constexpr int kMinDistinctivePassPhrase = 3;
  const int texts = wire::kVersion5Payload;
  const int start = passPhraseLength >= kMinDistinctivePassPhrase ? texts + ssidLength : texts;
  return piece >= start && piece < texts + ssidLength + passPhraseLength;
}

std::optional<PacketFields> readFields(std::optional<std::uint8_t> head, std::uint8_t ssidLength,
                                       std::uint8_t passPhraseLength) {
  const int append = head ? *head - wire::kHeadBias : 0;
  const PacketFields fields{ssidLength, passPhraseLength, append};
  const bool possible = append >= 0 && append <= wire::kMaxAppend && ssidLength <= wire::kMaxSsid &&
                        passPhraseLength <= wire::kMaxPassPhrase &&
                        fields.packetLength(Encoding::version5) <= wire::kMaxPacketBytes;
  if (!possible) return std::nullopt;
  return fields;
}

bool crcHolds(Encoding encoding, std::span<const std::uint8_t> packet) {
  const bool version5 = encoding == Encoding::version5;
  const auto covered = packet.subspan(version5 ? wire::kVersion5Payload : wire::kVersion3SsidLength);
  const std::uint8_t crc = packet[version5 ? wire::kVersion5Crc : wire::kVersion3Crc];
  return crc8(covered.data(), covered.size()) == crc;
}

Credentials readCredentials(Encoding encoding, const PacketFields& fields,
                            std::span<const std::uint8_t> packet) {
  const auto ssid = packet.begin() + headerLength(encoding);
  const auto passPhrase = ssid + fields.ssidLength;
  const auto append = passPhrase + fields.passPhraseLength;
  Credentials credentials;
  credentials.ssid.assign(ssid, passPhrase);
  credentials.passPhrase.assign(passPhrase, append);
  if (encoding == Encoding::version5) credentials.append.assign(append, append + fields.appendLength);
  credentials.encoding = encoding;
  return credentials;
}

}  // namespace zor::receiver
