#pragma once

#include <atomic>
#include <cstring>
#include <thread>

#include "ZOR/ZorSuite.h"

namespace zor::bench {

/// Answers upgrade requests on port 25000: reports 50 per cent until `finish` is called, then 100.
class UpgradingModule {
 public:
  static constexpr const char* kIp = "10.77.0.1";

  UpgradingModule() : thread_([this] { answer(); }) {}
  ~UpgradingModule() {
    ended_ = true;
    thread_.join();
  }
  UpgradingModule(const UpgradingModule&) = delete;
  UpgradingModule& operator=(const UpgradingModule&) = delete;

  /// Any thread.
  void finish() { done_ = true; }

 private:
  static constexpr std::int32_t kPort = 25000;
  static constexpr std::int32_t kMaxRequestLength = 1024;

  void answer() {
    const std::int32_t socket = ZorUdpInit(kPort);
    char line[kMaxRequestLength + 1];
    char source[kZorIpSize];
    std::uint32_t port = 0;
    while (!ended_) {
      if (ZorUdpRecvData(socket, line, kMaxRequestLength, source, &port) <= 0) continue;
      const char* const reply = replyTo(line);
      ZorUdpSendData(socket, reply, static_cast<std::int32_t>(std::strlen(reply)), source,
                     static_cast<std::uint16_t>(port));
    }
    ZorUdpClose(socket);
  }

  const char* replyTo(const char* request) const {
    if (std::strncmp(request, "xcmd_req:123", 12) == 0) return "xcmd_rsp:123:ret=0\r\n";
    return done_ ? "xcmd_rsp:321:status=100\r\n" : "xcmd_rsp:321:status=50\r\n";
  }

  std::atomic<bool> done_{false};
  std::atomic<bool> ended_{false};
  std::thread thread_;
};

}  // namespace zor::bench
