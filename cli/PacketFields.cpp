#include "cli/PacketFields.h"

#include <utility>

#include "ZOR/ZorSuite.h"
#include "cli/Escape.h"

namespace zor::cli {
namespace {

constexpr int kNoAppendBytes = 16;  ///< Byte 0 of a version 5 packet without append bytes.

/// Takes a packet apart from its start.
class FieldReader {
 public:
  explicit FieldReader(const std::vector<std::uint8_t>& packet) : packet_(packet) {}

  /// The byte that is next.
  int next() const { return packet_[offset_]; }

  /// The `count` bytes that are next, as a text.
  std::string text(std::size_t count) const {
    return {packet_.begin() + index(offset_), packet_.begin() + index(offset_ + count)};
  }

  /// Adds the `count` bytes that are next; nothing when there are none.
  void take(const char* name, std::size_t count, std::string meaning) {
    if (count == 0) return;
    const std::string bytes = text(count);
    fields.push_back({name, offset_, {bytes.begin(), bytes.end()}, std::move(meaning)});
    offset_ += count;
  }

  std::vector<PacketField> fields;

 private:
  static std::ptrdiff_t index(std::size_t offset) { return static_cast<std::ptrdiff_t>(offset); }

  const std::vector<std::uint8_t>& packet_;
  std::size_t offset_ = 0;
};

/// Names the port if the bytes are the record that does.
std::string appendMeaning(const std::string& append) {
  const auto octet = [&](std::size_t i) { return static_cast<std::uint8_t>(append[i]); };
  constexpr std::size_t kRecordSize = 3;
  if (append.size() != kRecordSize) return "append bytes";
  const std::int32_t port = octet(1) + 256 * octet(2);
  const bool isRecord = ZorMakePortRecord(port)[0] == octet(0);
  return isRecord ? "append bytes: announce on UDP port " + std::to_string(port) : "append bytes";
}

}  // namespace

std::vector<PacketField> packetFields(const std::vector<std::uint8_t>& packet, PacketVersion version) {
  FieldReader reader(packet);
  std::size_t appended = 0;
  if (version == PacketVersion::version5) {
    appended = static_cast<std::size_t>(reader.next() - kNoAppendBytes);
    reader.take("append_length", 1, "16 + number of append bytes, " + std::to_string(appended));
    reader.take("crc", 1, "CRC-8 of everything from offset 4");
  } else {
    reader.take("crc", 1, "CRC-8 of everything from offset 1");
  }
  const auto ssid = static_cast<std::size_t>(reader.next());
  reader.take("ssid_length", 1, "SSID length, " + std::to_string(ssid));
  const auto passPhrase = static_cast<std::size_t>(reader.next());
  reader.take("pass_phrase_length", 1, "pass phrase length, " + std::to_string(passPhrase));
  reader.take("ssid", ssid, "SSID \"" + printable(reader.text(ssid)) + "\"");
  reader.take("pass_phrase", passPhrase, "pass phrase \"" + printable(reader.text(passPhrase)) + "\"");
  reader.take("append", appended, appendMeaning(reader.text(appended)));
  return std::move(reader.fields);
}

}  // namespace zor::cli
