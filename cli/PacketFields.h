#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zor::cli {

/// The encoding of a packet.
enum class PacketVersion { version5, version3 };

/// A part of a packet that means one thing.
struct PacketField {
  std::string name;  ///< In JSON, such as "ssid_length".
  std::size_t offset = 0;
  std::vector<std::uint8_t> bytes;  ///< Never empty.
  std::string meaning;              ///< For people, escaped already.
};

/// The fields of `packet`, which one of the library's builders has made, in their order.
std::vector<PacketField> packetFields(const std::vector<std::uint8_t>& packet, PacketVersion version);

}  // namespace zor::cli
