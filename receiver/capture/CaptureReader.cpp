#include "receiver/capture/CaptureReader.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace zor::receiver {
namespace {

/// Holds every header, also long radiotap ones.
constexpr int kSnapLength = 512;
constexpr int kBufferBytes = 4 << 20;

std::string oneLine(std::string text) {
  std::ranges::replace(text, '\n', ' ');
  return text;
}

std::int64_t microseconds(const timeval& stamp) {
  constexpr std::int64_t kMaxSeconds = 9'000'000'000'000;
  const std::int64_t seconds = std::clamp<std::int64_t>(stamp.tv_sec, -kMaxSeconds, kMaxSeconds);
  return seconds * 1'000'000 + std::clamp<std::int64_t>(stamp.tv_usec, 0, 999'999);
}

struct Reading {
  const CaptureReader::FrameHandler& onFrame;
  LinkLayer layer;
};

}  // namespace

void CaptureReader::Close::operator()(pcap* capture) const {
  pcap_close(capture);
}

std::string CaptureReader::openFile(const std::string& path) {
  std::FILE* const stream = std::fopen(path.c_str(), "rbe");
  if (stream == nullptr) return std::strerror(errno);
  return openStream(stream);
}

std::string CaptureReader::openStream(std::FILE* stream) {
  char reason[PCAP_ERRBUF_SIZE] = "";
  capture_.reset(pcap_fopen_offline(stream, reason));
  if (capture_ == nullptr) {
    std::fclose(stream);
    return oneLine(reason);
  }
  return adoptLinkLayer();
}

std::string CaptureReader::openInterface(const std::string& interface) {
  char reason[PCAP_ERRBUF_SIZE] = "";
  capture_.reset(pcap_create(interface.c_str(), reason));
  return oneLine(capture_ ? configure() : reason);
}

std::string CaptureReader::configure() {
  pcap* const capture = capture_.get();
  pcap_set_snaplen(capture, kSnapLength);
  pcap_set_promisc(capture, 1);
  pcap_set_immediate_mode(capture, 1);
  pcap_set_buffer_size(capture, kBufferBytes);
  const int status = pcap_activate(capture);
  if (status < 0) {
    const std::string detail = pcap_geterr(capture);
    return pcap_statustostr(status) + (detail.empty() ? detail : ", " + detail);
  }
  char reason[PCAP_ERRBUF_SIZE] = "";
  if (pcap_setnonblock(capture, 1, reason) != 0) return reason;
  descriptor_ = pcap_get_selectable_fd(capture);
  if (descriptor_ < 0) return "its frames cannot be waited for";
  return adoptLinkLayer();
}

std::string CaptureReader::adoptLinkLayer() {
  const int type = pcap_datalink(capture_.get());
  const auto layer = linkLayerOf(type);
  if (layer) {
    layer_ = *layer;
    return {};
  }
  const char* const name = pcap_datalink_val_to_name(type);
  return "its link type " + (name != nullptr ? std::string(name) : std::to_string(type)) +
         " is none of Ethernet, Linux cooked, raw IP and 802.11";
}

CaptureReader::Status CaptureReader::read(const FrameHandler& onFrame) {
  Reading reading{onFrame, layer_};
  const int status =
      pcap_dispatch(capture_.get(), kMaxFramesPerRead, &takeFrame, reinterpret_cast<std::uint8_t*>(&reading));
  if (status > 0) return Status::more;
  if (status == 0) return descriptor_ < 0 ? Status::ended : Status::more;
  problem_ = oneLine(pcap_geterr(capture_.get()));
  return Status::failed;
}

// NOLINTNEXTLINE(readability-non-const-parameter): the signature is libpcap's.
void CaptureReader::takeFrame(std::uint8_t* reading, const pcap_pkthdr* header, const std::uint8_t* bytes) {
  const auto& [onFrame, layer] = *reinterpret_cast<const Reading*>(reading);
  CapturedFrame frame = readFrame(layer, {bytes, header->caplen}, header->len);
  frame.timeMicroseconds = microseconds(header->ts);
  onFrame(frame);
}

std::int64_t CaptureReader::position() const {
  std::FILE* const file = capture_ ? pcap_file(capture_.get()) : nullptr;
  return file == nullptr ? 0 : std::max<std::int64_t>(ftello(file), 0);
}

}  // namespace zor::receiver
