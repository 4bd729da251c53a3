#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "receiver/Observation.h"

struct pcap;
struct pcap_pkthdr;

namespace zor::receiver {

/// The broadcast and IPv4 multicast frames that arrive at a network interface, as a module outside the
/// network hears them: who sends, to whom, how long, when. The capture stops behind the Ethernet header, so
/// no content can leak into what is decoded; it is promiscuous, since nobody here has joined the groups.
///
/// Not thread-safe. Nothing blocks.
class FrameSource {
 public:
  using FrameHandler = std::function<void(const Observation&)>;

  /// Most frames that one read() takes, so that a flood leaves its reader time for other things.
  static constexpr int kFramesPerRead = 256;

  /// Starts to capture; needs CAP_NET_RAW. Call it once.
  /// \return empty, or one line that says why it could not.
  std::string open(const std::string& interface);

  /// Readable while frames wait. Belongs to this object.
  int descriptor() const { return descriptor_; }

  /// Passes the waiting frames on in the order of their arrival, on the calling thread.
  /// \return empty, or one line that says why no more frames will come.
  std::string read(const FrameHandler& onFrame);

 private:
  struct Close {
    void operator()(pcap* capture) const;
  };

  static void takeFrame(std::uint8_t* reading, const pcap_pkthdr* header, const std::uint8_t* octets);
  std::string configure();

  std::unique_ptr<pcap, Close> capture_;
  int descriptor_ = -1;
  std::int64_t latest_ = 0;  ///< Time of the latest frame, in microseconds of the steady clock.
};

}  // namespace zor::receiver
