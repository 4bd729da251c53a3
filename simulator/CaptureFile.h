#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "receiver/decoder/MacAddress.h"

namespace zor::simulator {

/// What stands before the datagrams of a capture file.
enum class CaptureLink { ethernet, cooked1, cooked2, rawIp, wifi, radiotap, ppi };

/// What 802.11 adds to a datagram.
enum class Encryption { none, wep, tkip, ccmp };

/// One frame to write. The last five are of 802.11.
struct AirFrame {
  std::int64_t timeUs = 0;
  receiver::MacAddress source{};
  receiver::MacAddress destination{};
  std::int32_t length = 0;  ///< Of the datagram, bytes.
  bool fromAccessPoint = false;
  bool isRetry = false;
  bool hasQos = false;
  bool isAggregate = false;  ///< A-MSDU.
  std::uint16_t sequence = 0;
  Encryption encryption = Encryption::none;
};

/// Writes frames to a capture file, of each the first bytes: enough for the headers.
class CaptureFile {
 public:
  /// `asPcapng`: the newer format.
  CaptureFile(const std::string& path, CaptureLink link, bool asPcapng);

  void write(const AirFrame& frame);

  /// Writes the rest. Returns whether everything was written.
  bool close();

 private:
  std::ofstream file_;
  CaptureLink link_;
  bool asPcapng_;
};

}  // namespace zor::simulator
