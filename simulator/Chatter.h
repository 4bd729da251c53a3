#pragma once

#include <array>
#include <queue>
#include <span>
#include <vector>

#include "simulator/FrameSource.h"
#include "simulator/Random.h"

namespace zor::simulator {

/// How a protocol sends group frames: a question and its repetitions.
struct ChatterProtocol {
  receiver::MacAddress destination;
  std::int32_t minLength;  ///< As that of a UDP datagram whose frame is as long, bytes.
  std::int32_t maxLength;
  int repetitions;     ///< How often the same frame is sent.
  std::int64_t gapUs;  ///< From one repetition to the next.
};

inline constexpr receiver::MacAddress kToAll = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/// What phones and other devices of a home send to all or to well-known groups.
inline constexpr std::array<ChatterProtocol, 5> kHomeProtocols = {{
    // ARP: three probes, 1 to 2 s apart (RFC 5227). 28 bytes, as many as the headers of IPv4 and UDP have.
    {kToAll, 0, 0, 3, 1'000'000},
    // DHCP: at least 300 bytes (RFC 951); repeated after 4 s (RFC 2131).
    {kToAll, 300, 348, 2, 4'000'000},
    // Multicast DNS, to 224.0.0.251: the first repetition after 1 s (RFC 6762).
    {{0x01, 0x00, 0x5E, 0x00, 0x00, 0xFB}, 28, 300, 2, 1'000'000},
    // SSDP, to 239.255.255.250: more than one search, a few hundred ms apart (UPnP Device Architecture 1.1).
    {{0x01, 0x00, 0x5E, 0x7F, 0xFF, 0xFA}, 94, 170, 3, 200'000},
    // NetBIOS name queries: three, 250 ms apart (RFC 1002).
    {kToAll, 50, 50, 3, 250'000},
}};

/// Short ones of them and more: what hundreds of devices can send without filling the channel.
inline constexpr std::array<ChatterProtocol, 4> kShortProtocols = {{
    {kToAll, 0, 0, 3, 1'000'000},
    {kToAll, 50, 50, 3, 250'000},
    // Reports of group membership, to 224.0.0.22: twice within 1 s (IGMPv3, RFC 3376).
    {{0x01, 0x00, 0x5E, 0x00, 0x00, 0x16}, 12, 20, 2, 500'000},
    // A part of a scan of the subnet with ARP requests, which follow each other as fast as a program sends
    // them.
    {kToAll, 0, 0, 16, 2'000},
}};

/// Group frames that are not part of a run, of one device or of many. Questions arise at random times; each
/// is of a random device and a random protocol.
class Chatter final : public FrameSource {
 public:
  /// With no `devices`, every question has a new address. `protocols` and `random` must outlive the source.
  Chatter(std::span<const ChatterProtocol> protocols, std::vector<Transmitter> devices,
          double framesPerSecond, Random& random);

  void advance() override;

 private:
  struct Later {
    bool operator()(const SentFrame& a, const SentFrame& b) const { return a.timeUs > b.timeUs; }
  };

  static constexpr std::int64_t kBeforeUs = 10'000'000;

  void ask();
  Transmitter anyDevice();

  std::span<const ChatterProtocol> protocols_;
  std::vector<Transmitter> devices_;
  Random& random_;
  double meanGapUs_;
  std::int64_t questionUs_ = -kBeforeUs;
  std::priority_queue<SentFrame, std::vector<SentFrame>, Later> pending_;
};

}  // namespace zor::simulator
