#include "receiver/FrameSource.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <chrono>

namespace zor::receiver {
namespace {

constexpr int kEthernetHeader = 14;  // Destination, source, EtherType (IEEE 802.3).
constexpr int kBufferOctets = 1 << 20;

/// Group addresses without those of IPv6 (33:33 in front, RFC 2464), which no encoding uses.
constexpr char kFilter[] = "ether multicast and not ether[0:2] = 0x3333";

template <typename Clock>
std::int64_t microseconds() {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count();
}

/// The arrival time on the steady clock of a frame that the kernel stamped with the time of day. A frame that
/// seems to come from the future, or to have waited for long, means that the time of day was set.
std::int64_t steadyTime(const timeval& stamp) {
  constexpr std::int64_t kLongestWait = 1'000'000;
  const std::int64_t arrival = std::int64_t{stamp.tv_sec} * 1'000'000 + stamp.tv_usec;
  const std::int64_t age = microseconds<std::chrono::system_clock>() - arrival;
  return microseconds<std::chrono::steady_clock>() - (age >= 0 && age <= kLongestWait ? age : 0);
}

struct Reading {
  const FrameSource::FrameHandler& onFrame;
  std::int64_t& latest;
};

}  // namespace

void FrameSource::Close::operator()(pcap* capture) const {
  pcap_close(capture);
}

std::string FrameSource::open(const std::string& interface) {
  char reason[PCAP_ERRBUF_SIZE] = "";
  capture_.reset(pcap_create(interface.c_str(), reason));
  std::string error = capture_ ? configure() : reason;
  if (error.empty()) return {};
  std::replace(error.begin(), error.end(), '\n', ' ');
  return "cannot capture on " + interface + ": " + error;
}

std::string FrameSource::configure() {
  pcap* const capture = capture_.get();
  pcap_set_snaplen(capture, kEthernetHeader);
  pcap_set_promisc(capture, 1);
  pcap_set_immediate_mode(capture, 1);
  pcap_set_buffer_size(capture, kBufferOctets);
  const int status = pcap_activate(capture);
  // Without promiscuous mode the groups that nobody here has joined would stay unheard.
  if (status < 0 || status == PCAP_WARNING_PROMISC_NOTSUP) {
    const std::string detail = pcap_geterr(capture);
    return pcap_statustostr(status) + (detail.empty() ? detail : ", " + detail);
  }
  if (pcap_datalink(capture) != DLT_EN10MB) return "it carries no Ethernet frames";

  char reason[PCAP_ERRBUF_SIZE] = "";
  if (pcap_setnonblock(capture, 1, reason) != 0) return reason;
  bpf_program filter{};
  if (pcap_compile(capture, &filter, kFilter, 1, PCAP_NETMASK_UNKNOWN) != 0) return pcap_geterr(capture);
  const bool isSet = pcap_setfilter(capture, &filter) == 0;
  pcap_freecode(&filter);
  // What the module itself sends is not on the air for it.
  if (!isSet || pcap_setdirection(capture, PCAP_D_IN) != 0) return pcap_geterr(capture);
  descriptor_ = pcap_get_selectable_fd(capture);
  return descriptor_ >= 0 ? "" : "its frames cannot be waited for";
}

std::string FrameSource::read(const FrameHandler& onFrame) {
  Reading reading{onFrame, latest_};
  const int status =
      pcap_dispatch(capture_.get(), kFramesPerRead, &takeFrame, reinterpret_cast<std::uint8_t*>(&reading));
  return status >= 0 ? std::string{} : std::string{"cannot capture: "} + pcap_geterr(capture_.get());
}

// NOLINTNEXTLINE(readability-non-const-parameter): the signature is libpcap's.
void FrameSource::takeFrame(std::uint8_t* reading, const pcap_pkthdr* header, const std::uint8_t* octets) {
  // Frames can wait in the capture from before the filter was set.
  if (header->caplen < kEthernetHeader || (octets[0] & 1) == 0) return;
  const auto& [onFrame, latest] = *reinterpret_cast<const Reading*>(reading);
  Observation observation;
  std::copy_n(octets, observation.destination.size(), observation.destination.begin());
  std::copy_n(octets + observation.destination.size(), observation.sender.size(), observation.sender.begin());
  latest = observation.timeMicroseconds = std::max(latest, steadyTime(header->ts));
  observation.frameLength = static_cast<std::int32_t>(std::min<std::uint32_t>(header->len, INT32_MAX));
  onFrame(observation);
}

}  // namespace zor::receiver
