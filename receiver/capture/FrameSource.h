#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "receiver/decoder/Observation.h"

struct pcap;
struct pcap_pkthdr;

namespace zor::receiver {

/// The broadcast and IPv4 multicast frames that arrive at a network interface, as a module outside the
/// network hears them: sender, destination, length and time. The capture stops after the Ethernet header, so
/// no content can leak into the decoder. It is promiscuous, since this host has not joined the groups.
///
/// Not thread-safe. Nothing blocks.
class FrameSource {
 public:
  using FrameHandler = std::function<void(const Observation&)>;

  /// Most frames that one read() takes, so that a flood leaves its caller time for other work.
  static constexpr int kMaxFramesPerRead = 256;

  /// Starts to capture; needs CAP_NET_RAW. Call it once. Returns empty, or one line that says why it failed.
  std::string open(const std::string& interface);

  /// Readable while frames wait. Belongs to this object.
  int descriptor() const { return descriptor_; }

  /// Hands over the waiting frames in the order of their arrival, on the calling thread. Returns empty, or
  /// one line that says why no more frames will come.
  std::string read(const FrameHandler& onFrame);

 private:
  struct Close {
    void operator()(pcap* capture) const;
  };

  static void takeFrame(std::uint8_t* reading, const pcap_pkthdr* header, const std::uint8_t* bytes);
  std::string configure();

  std::unique_ptr<pcap, Close> capture_;
  int descriptor_ = -1;
  std::int64_t latest_ = 0;  ///< Time of the latest frame, in microseconds of the steady clock.
};

}  // namespace zor::receiver
