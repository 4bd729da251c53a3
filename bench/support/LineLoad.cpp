#include "bench/support/LineLoad.h"

#include <arpa/inet.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "ZOR/net/UdpSocket.h"

namespace zor::bench {
namespace {

/// Returns one of the kernel's figures for a socket's memory, an SK_MEMINFO_ index.
std::uint32_t memoryInfo(std::int32_t descriptor, int which) {
  std::uint32_t info[SK_MEMINFO_VARS] = {};
  socklen_t size = sizeof info;
  getsockopt(descriptor, SOL_SOCKET, SO_MEMINFO, info, &size);
  return info[which];
}

}  // namespace

LineLoad::LineLoad(std::int32_t receiver, std::int32_t port) : receiver_(receiver), sender_(ZorUdpInit(0)) {
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(static_cast<std::uint16_t>(port));
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(sender_, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0) return;
  std::perror("connect to the receiver");
  std::exit(1);
}

LineLoad::~LineLoad() {
  ZorUdpClose(sender_);
}

std::size_t LineLoad::write(Line& line, LineKind kind) {
  if (kind == LineKind::garbage) {
    return static_cast<std::size_t>(std::snprintf(
        line.data(), line.size(), "not a module line: mac=02:00:00:00:00:00,ver=1.0,cap=0x1,\r\n"));
  }
  const std::uint32_t id = kind == LineKind::fresh ? ++freshLines_ : 0;
  return static_cast<std::size_t>(
      std::snprintf(line.data(), line.size(), "xcmd_notify:1:mac=%08x,ver=1.0,cap=0x1,name=module,\r\n", id));
}

void LineLoad::send(LineKind kind, std::size_t count) {
  std::array<iovec, kBatch> parts{};
  std::array<mmsghdr, kBatch> messages{};
  for (std::size_t i = 0; i < count; ++i) {
    parts[i] = {lines_[i].data(), write(lines_[i], kind)};
    messages[i].msg_hdr.msg_iov = &parts[i];
    messages[i].msg_hdr.msg_iovlen = 1;
  }
  for (std::size_t sent = 0; sent < count;) {
    const int taken = sendmmsg(sender_, &messages[sent], static_cast<unsigned>(count - sent), 0);
    sent += static_cast<std::size_t>(std::max(taken, 0));
  }
}

void LineLoad::sendAll(LineKind kind, std::size_t count) {
  const std::uint32_t maxMemory = memoryInfo(receiver_, SK_MEMINFO_RCVBUF) / 2;
  for (std::size_t sent = 0; sent < count; sent += kBatch) {
    while (memoryInfo(receiver_, SK_MEMINFO_RMEM_ALLOC) > maxMemory) std::this_thread::yield();
    send(kind, std::min(kBatch, count - sent));
  }
  while (anyWaiting()) std::this_thread::yield();
}

void LineLoad::sendPaced(LineKind kind, std::size_t perMillisecond, std::size_t milliseconds) {
  auto next = std::chrono::steady_clock::now();
  for (std::size_t passed = 0; passed < milliseconds; ++passed) {
    send(kind, perMillisecond);
    next += std::chrono::milliseconds(1);
    std::this_thread::sleep_until(next);
  }
}

std::uint32_t LineLoad::dropped() const {
  return memoryInfo(receiver_, SK_MEMINFO_DROPS);
}

bool LineLoad::anyWaiting() const {
  int nextSize = 0;
  return ioctl(receiver_, FIONREAD, &nextSize) == 0 && nextSize > 0;
}

}  // namespace zor::bench
