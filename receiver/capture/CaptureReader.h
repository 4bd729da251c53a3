#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "receiver/capture/CapturedFrame.h"
#include "receiver/capture/LinkLayer.h"

struct pcap;
struct pcap_pkthdr;

namespace zor::receiver {

/// Reads the frames of a capture file (pcap or pcapng) or of a network interface, one after the other, in
/// memory that does not grow with their number. Any bytes in a file are safe.
///
/// Not thread-safe. Call one of the open functions, once.
class CaptureReader {
 public:
  using FrameHandler = std::function<void(const CapturedFrame&)>;

  /// Most frames that one read() takes.
  static constexpr int kMaxFramesPerRead = 4096;

  enum class Status { more, ended, failed };

  /// Opens a file. Returns empty, or why it cannot be read, without its name. May block, as reading does.
  std::string openFile(const std::string& path);

  /// Likewise for a stream, which this closes, also after a failure.
  std::string openStream(std::FILE* stream);

  /// Starts to capture all frames that `interface` sends and receives, or, where it is in monitor mode,
  /// hears. Needs CAP_NET_RAW. Returns empty, or why it cannot, without its name.
  std::string openInterface(const std::string& interface);

  LinkLayer linkLayer() const { return layer_; }

  /// Readable while frames of an interface wait. Belongs to this object; -1 for a file.
  int descriptor() const { return descriptor_; }

  /// Hands over the next frames on the calling thread. Status::failed comes after the frames before the
  /// failure were handed over, and ends the capture. An interface never ends, and nothing blocks there.
  Status read(const FrameHandler& onFrame);

  /// After Status::failed: one line that says why, as bytes that may come from the file. Otherwise empty.
  const std::string& problem() const { return problem_; }

  /// How much of the file was read, in bytes; 0 where that cannot be said.
  std::int64_t position() const;

 private:
  struct Close {
    void operator()(pcap* capture) const;
  };

  static void takeFrame(std::uint8_t* reading, const pcap_pkthdr* header, const std::uint8_t* bytes);
  std::string adoptLinkLayer();
  std::string configure();

  std::unique_ptr<pcap, Close> capture_;
  LinkLayer layer_ = LinkLayer::ethernet;
  int descriptor_ = -1;
  std::string problem_;
};

}  // namespace zor::receiver
