#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/LogCapture.h"
#include "tests/support/UdpPeer.h"

namespace {

TEST(UdpSockets, TellWhatFailed) {
  const std::int32_t first = ZorUdpInit(25010);
  ASSERT_GE(first, 0);
  EXPECT_EQ(fcntl(first, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  EXPECT_EQ(ZorUdpInit(25010), -2);
  ZorUdpClose(first);
  const std::int32_t again = ZorUdpInit(25010);
  EXPECT_GE(again, 0) << "a closed socket frees its port";
  ZorUdpClose(again);
  ZorUdpClose(-1);

  FakeSystem system;
  system.denySockets = true;
  EXPECT_EQ(ZorUdpInit(0), -1);
  EXPECT_EQ(ZorUdpMcInit(), -1);
  EXPECT_EQ(ZorUdpBcInit(), -1);
}

TEST(UdpReceive, TakesOneDatagramAndEndsItWithNul) {
  const UdpPeer module(40000, "127.0.0.2");
  const std::int32_t socket = ZorUdpInit(25010);
  char buffer[8];
  char source[16] = "unset";
  std::uint32_t port = 0;
  EXPECT_EQ(ZorUdpRecvData(socket, buffer, 4, source, &port), 0) << "nothing there within 10 ms";
  EXPECT_STREQ(source, "unset");

  for (const std::string sent : {"abcd", "abcdefgh", "ab"}) {
    std::memset(buffer, '#', sizeof buffer);
    module.send(sent, 25010);
    const std::string expected = sent.substr(0, 4);
    EXPECT_EQ(ZorUdpRecvData(socket, buffer, 4, source, &port), static_cast<std::int32_t>(expected.size()));
    EXPECT_EQ(std::string(buffer), expected);
    EXPECT_EQ(buffer[expected.size() + 1], '#') << "only length + 1 bytes are written";
  }
  EXPECT_STREQ(source, "127.0.0.2");
  EXPECT_EQ(port, 40000U);
  module.send("x", 25010);
  EXPECT_EQ(ZorUdpRecvData(socket, buffer, 4, nullptr, nullptr), 1);
  module.send("", 25010);
  EXPECT_EQ(ZorUdpRecvData(socket, buffer, 4, nullptr, nullptr), 0);
  ZorUdpClose(socket);

  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(ZorUdpRecvData(-1, buffer, 4, nullptr, nullptr), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(5));
  EXPECT_LT(ZorUdpRecvData(socket, buffer, 4, nullptr, nullptr), 0) << "a closed descriptor";
}

TEST(UdpReceive, WorksBeyondAThousandDescriptors) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 2048);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  while (open("/dev/null", O_RDONLY | O_CLOEXEC) < 1100) {
  }
  const std::int32_t socket = ZorUdpInit(25010);
  ASSERT_GT(socket, 1024);
  const UdpPeer module;
  module.send("far", 25010);
  char buffer[8];
  EXPECT_EQ(ZorUdpRecvData(socket, buffer, 7, nullptr, nullptr), 3);
  ZorUdpClose(socket);
}

TEST(UdpSend, ReadsAddressesStrictlyThenPermissively) {
  FakeSystem system;
  const std::int32_t socket = ZorUdpBcInit();
  const std::pair<const char*, const char*> cases[] = {{"10.77.0.9", "10.77.0.9"},
                                                       {"10.1", "10.0.0.1"},
                                                       {"0x7f.1", "127.0.0.1"},
                                                       {"no address", "255.255.255.255"},
                                                       {"", "255.255.255.255"}};
  for (const auto& [text, destination] : cases) {
    EXPECT_EQ(ZorUdpSendData(socket, "abc", 3, text, 6001), 3) << text;
    EXPECT_EQ(system.sent().back().destination, destination);
    EXPECT_EQ(system.sent().back().port, 6001);
  }
  ZorUdpClose(socket);
}

TEST(UdpSend, RaisesNoSignal) {
  const int broken = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);  // It was never connected.
  EXPECT_EQ(ZorUdpSendData(broken, "x", 1, "127.0.0.1", 6001), -1);
  EXPECT_EQ(errno, EPIPE) << "and this process lives";
  close(broken);
}

TEST(LazySenders, ReopenAfterAFailedSendAndStamp) {
  const struct {
    std::int32_t (*send)(std::int32_t*, const void*, std::int32_t, const char*, std::uint16_t);
    const char* warning;
    bool stamps;
  } kCases[] = {{ZorSmartMcSendData, "m)warning 1", true},
                {ZorSmartBcSendData, "b)warning 1", true},
                {ZorUdpBcSendData, "b)warning 1", false}};
  ZorGetUsec();
  for (const auto& [function, warning, stamps] : kCases) {
    FakeSystem system;
    const LogCapture log;
    system.clockAheadMs = 5000;
    s_ZorDevice.smartLastMs = -1;
    std::int32_t descriptor = -7;
    const auto send = [&, function = function](const std::string& bytes) {
      return function(&descriptor, bytes.data(), static_cast<std::int32_t>(bytes.size()), "239.1.2.3", 6001);
    };

    system.denySockets = true;
    EXPECT_EQ(send("x"), -1);
    system.denySockets = false;
    system.failSendsWhen([](const SentDatagram&) { return true; });
    EXPECT_EQ(send("x"), 0);
    EXPECT_EQ(descriptor, -1);
    EXPECT_EQ(log.lines(), std::vector<std::string>{warning});  // EPERM
    system.failSendsWhen(nullptr);
    EXPECT_EQ(send(""), 0);
    EXPECT_EQ(s_ZorDevice.smartLastMs, -1) << "neither a failure nor an empty datagram stamps";
    EXPECT_GE(descriptor, 0);
    EXPECT_NE(system.sent()[0].localPort, system.sent()[1].localPort) << "the new socket has a new port";

    EXPECT_EQ(send("x"), 1);
    EXPECT_EQ(system.sent()[1].localPort, system.sent()[2].localPort) << "and is kept while it works";
    EXPECT_EQ(s_ZorDevice.smartLastMs >= 5000, stamps);
    ZorUdpClose(descriptor);
  }
}

TEST(Clock, CountsMillisecondsFromItsFirstReading) {
  FakeSystem system;
  const std::int64_t start = 1'700'000'000'999'500;
  const std::pair<std::int64_t, long> readings[] = {{0, 0},
                                                    {999, 1},
                                                    {1'500'000, 1500},
                                                    {500, 1},
                                                    {1'000'500, 1001},
                                                    {-1'000'000, -1000},
                                                    {-2'000'700, -2000}};
  for (const auto& [passedUs, milliseconds] : readings) {
    system.frozenClockUs = start + passedUs;
    EXPECT_EQ(ZorGetUsec(), milliseconds) << passedUs;
  }
}

}  // namespace
