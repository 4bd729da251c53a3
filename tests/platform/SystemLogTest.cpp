#include <gtest/gtest.h>
#include <pthread.h>
#include <syslog.h>

#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "tests/support/LogDaemon.h"
#include "tests/support/UdpPeer.h"
#include "tests/support/Workers.h"

namespace {

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST(SystemLog, EscapesWhatCouldForgeALine) {
  const LogDaemon daemon(SOCK_DGRAM);
  const std::string header = "<14>ZorSuite[" + std::to_string(getpid()) + "]: ";
  const std::pair<std::string, std::string> kLines[] = {
      {"m)warning 101", "m)warning 101"},
      {"", ""},
      {"ssid=a\n<14>b\r\t\x01\x1f\x7f", "ssid=a\\x0a<14>b\\x0d\\x09\\x01\\x1f\\x7f"},
      {"ssid=\\x0a, caf\xC3\xA9 %s", "ssid=\\\\x0a, caf\xC3\xA9 %s"},
      {std::string(2000, 'a'), std::string(992, 'a')},
      {"123" + std::string(300, '\n'), "123" + [] {
         std::string escapes;
         for (int i = 0; i < 248; ++i) escapes += "\\x0a";
         return escapes;
       }()}};
  const std::ptrdiff_t before = openDescriptors();
  for (const auto& [line, logged] : kLines) {
    ZorLogLine(line.c_str());
    EXPECT_EQ(daemon.read(), header + logged);
  }
  std::thread([] {
    pthread_cancel(pthread_self());
    ZorLogLine("complete");
  }).join();
  EXPECT_EQ(daemon.read(), header + "complete");
  EXPECT_EQ(openDescriptors(), before) << "nothing is left open";

  openlog("application", 0, LOG_LOCAL0);
  ZorLogLine("the library's");
  EXPECT_EQ(daemon.read(), header + "the library's");
  syslog(LOG_INFO, "its own");
  EXPECT_NE(daemon.read().find(" application: its own"), std::string::npos);
  closelog();
}

TEST(SystemLog, NeverWaitsForItsDaemon) {
  const UdpPeer taken(25010);
  ZorSuite suite;
  for (const std::string state : {"absent", "gone", "stream", "full"}) {
    std::optional<LogDaemon> daemon(std::in_place, state == "stream" ? SOCK_STREAM : SOCK_DGRAM);
    if (state == "absent") unlink("/dev/log");
    if (state == "gone") daemon.reset();
    if (state == "full") daemon->fill();
    const std::ptrdiff_t before = openDescriptors();
    suite.SmartConfigV3_Start("home", "secret", 60000);  // Logs here that its port is taken.
    for (int run = 0; run < 20; ++run) {
      suite.SmartConfigV5_Start("home", "secret", 60000);  // Its worker logs the start.
    }
    endWorkers();
    EXPECT_EQ(openDescriptors(), before) << state;
  }
}

}  // namespace
