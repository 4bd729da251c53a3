#include "receiver/capture/FrameSource.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <chrono>

namespace zor::receiver {
namespace {

constexpr int kEthernetHeader = 14;  // Destination, source, EtherType (IEEE 802.3).
constexpr int kKernelBufferBytes = 1 << 20;

/// Group addresses, except those of IPv6 (they start with 33:33, RFC 2464), which no encoding uses.
constexpr char kFilter[] = "ether multicast and not ether[0:2] = 0x3333";

template <typename Clock>
std::int64_t microseconds() {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count();
}

/// The arrival time on the steady clock of a frame that the kernel stamped with the time of day. If the frame
/// seems to come from the future or to have waited long, the time of day was set meanwhile.
std::int64_t steadyTime(const timeval& stamp) {
  constexpr std::int64_t kMaxWait = 1'000'000;
  const std::int64_t arrival = std::int64_t{stamp.tv_sec} * 1'000'000 + stamp.tv_usec;
  const std::int64_t age = microseconds<std::chrono::system_clock>() - arrival;
  return microseconds<std::chrono::steady_clock>() - (age >= 0 && age <= kMaxWait ? age : 0);
}

struct ModuleReading {
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
  pcap_set_buffer_size(capture, kKernelBufferBytes);
  const int status = pcap_activate(capture);
  // Without promiscuous mode, groups that this host has not joined would not be heard.
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
  // The module does not hear what it sends itself.
  if (!isSet || pcap_setdirection(capture, PCAP_D_IN) != 0) return pcap_geterr(capture);
  descriptor_ = pcap_get_selectable_fd(capture);
  return descriptor_ >= 0 ? "" : "its frames cannot be waited for";
}

std::string FrameSource::read(const FrameHandler& onFrame) {
  ModuleReading reading{onFrame, latest_};
  const int status =
      pcap_dispatch(capture_.get(), kMaxFramesPerRead, &takeFrame, reinterpret_cast<std::uint8_t*>(&reading));
  return status >= 0 ? std::string{} : std::string{"cannot capture: "} + pcap_geterr(capture_.get());
}

// NOLINTNEXTLINE(readability-non-const-parameter): the signature is libpcap's.
void FrameSource::takeFrame(std::uint8_t* reading, const pcap_pkthdr* header, const std::uint8_t* bytes) {
  // Frames captured before the filter was set may still wait.
  if (header->caplen < kEthernetHeader || (bytes[0] & 1) == 0) return;
  const auto& [onFrame, latest] = *reinterpret_cast<const ModuleReading*>(reading);
  Observation observation;
  std::copy_n(bytes, observation.destination.size(), observation.destination.begin());
  std::copy_n(bytes + observation.destination.size(), observation.sender.size(), observation.sender.begin());
  latest = observation.timeMicroseconds = std::max(latest, steadyTime(header->ts));
  observation.frameLength = static_cast<std::int32_t>(std::min<std::uint32_t>(header->len, INT32_MAX));
  onFrame(observation);
}

}  // namespace zor::receiver
