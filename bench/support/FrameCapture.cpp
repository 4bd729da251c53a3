#include "bench/support/FrameCapture.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/ip.h>
#include <netinet/udp.h>
#include <netpacket/packet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <thread>

#include "bench/support/SampleRun.h"

namespace zor::bench {
namespace {

constexpr std::uint16_t kEtherTypeIp = 0x0800;
constexpr std::chrono::milliseconds kDrainInterval{500};

[[noreturn]] void failCapture(const char* what) {
  std::perror(what);
  std::exit(1);
}

int openCapture(const std::string& interface) {
  const int descriptor = socket(AF_PACKET, SOCK_DGRAM | SOCK_NONBLOCK, htons(kEtherTypeIp));
  if (descriptor < 0) failCapture("packet socket");
  const int on = 1;
  if (setsockopt(descriptor, SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on) != 0) failCapture("SO_TIMESTAMPNS");
  sockaddr_ll local{};
  local.sll_family = AF_PACKET;
  local.sll_protocol = htons(kEtherTypeIp);
  local.sll_ifindex = static_cast<int>(if_nametoindex(interface.c_str()));
  if (bind(descriptor, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0)
    failCapture("bind to interface");
  return descriptor;
}

std::int64_t stampOf(msghdr& message) {
  for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
    if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SO_TIMESTAMPNS) continue;
    timespec stamp;
    std::memcpy(&stamp, CMSG_DATA(part), sizeof stamp);
    return std::int64_t{stamp.tv_sec} * 1'000'000'000 + stamp.tv_nsec;
  }
  failCapture("frame without a time stamp");
}

}  // namespace

FrameCapture::FrameCapture(const std::string& interface) : descriptor_(openCapture(interface)) {}

FrameCapture::~FrameCapture() {
  close(descriptor_);
}

bool FrameCapture::receiveOne() {
  std::uint8_t headers[sizeof(iphdr) + sizeof(udphdr)];
  alignas(cmsghdr) char control[256];
  iovec part{headers, sizeof headers};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  const ssize_t count = recvmsg(descriptor_, &message, 0);
  if (count < 0) return false;
  if (static_cast<std::size_t>(count) < sizeof headers) return true;

  iphdr ip;
  udphdr udp;
  std::memcpy(&ip, headers, sizeof ip);
  std::memcpy(&udp, headers + sizeof ip, sizeof udp);
  if (ip.ihl != 5 || ip.protocol != IPPROTO_UDP || ntohs(udp.dest) != kSmartConfigPort) return true;
  char destination[INET_ADDRSTRLEN];
  inet_ntop(AF_INET, &ip.daddr, destination, sizeof destination);
  const auto length = static_cast<std::int32_t>(ntohs(udp.len) - sizeof udp);
  auto& frames = IN_MULTICAST(ntohl(ip.daddr)) ? multicasts_ : broadcasts_;
  frames.push_back({stampOf(message), destination, length});
  return true;
}

void FrameCapture::drain() {
  while (receiveOne()) continue;
}

void FrameCapture::drainFor(double seconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(kDrainInterval);
    drain();
  }
}

std::vector<CapturedFrame> FrameCapture::frames(bool multicast) const {
  return multicast ? multicasts_ : broadcasts_;
}

}  // namespace zor::bench
