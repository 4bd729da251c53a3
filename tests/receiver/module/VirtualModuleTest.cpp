#include "receiver/module/VirtualModule.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/HttpServer.h"
#include "tests/support/RunningModule.h"
#include "tests/support/UdpPeer.h"
#include "tests/support/Workers.h"

namespace zor::receiver {
namespace {

using namespace std::literals;
using Clock = std::chrono::steady_clock;

constexpr char kModule[] = "10.77.0.1";
constexpr std::uint16_t kModulePort = 25000;

constexpr char kInfo[] = "xcmd_req:7:cmd=info,\r\n";
constexpr char kStatus[] = "xcmd_req:321:cmd=upgradestatus\r\n";
constexpr char kAccepted[] = "xcmd_rsp:123:ret=0\r\n";
constexpr char kPairs[] = "mac=02:00:00:00:00:02,ver=1.0.0,cap=0x1,name=virtual\r\n";

/// The module's first answer to a request; empty when none comes in time.
std::string ask(const UdpPeer& phone, const std::string& request) {
  phone.send(request, kModulePort, kModule);
  return phone.receive(patience(1000)).text;
}

/// Sends SSID "abc" and pass phrase "pass" over one channel until the module has decoded them.
std::optional<CredentialsDecoded> provision(RunningModule& module, bool multicast) {
  const std::uint8_t append[] = {0x01, 0xB3, 0x61};  // Notifications to port 25011.
  (multicast ? s_ZorSmart5_BcLen : s_ZorSmart5_McLen) = 0;
  s_ZorSmart5_McCharInterval = 2;
  s_ZorSmart5_BcCharInterval = 2;
  ZorSuite suite;
  suite.SmartConfigV5_Append(append, sizeof append);
  suite.SmartConfigV5_Start("abc", "pass", 10000);
  std::optional<CredentialsDecoded> event = module.waitFor<CredentialsDecoded>();
  endWorkers();
  return event;
}

class Provisioning : public testing::TestWithParam<bool> {};

TEST_P(Provisioning, FramesMakeTheModuleJoinAndAnnounceItself) {
  const UdpPeer listener(25011);
  RunningModule module(optionsOf(false));
  const auto decoded = provision(module, GetParam());
  ASSERT_TRUE(decoded);
  EXPECT_TRUE(decoded->accepted);
  const MacAddress sender = {0x02, 0, 0, 0, 0, 0x01};
  EXPECT_EQ(decoded->credentials,
            (Credentials{"abc", "pass", {0x01, 0xB3, 0x61}, Encoding::version5, sender}));
  const auto announced = module.waitFor<ModuleAnnounced>();
  ASSERT_TRUE(announced);
  EXPECT_EQ(announced->port, 25011);
  EXPECT_EQ(announced->line + "\r\n", "xcmd_notify:1:"s + kPairs);
  ASSERT_TRUE(module.waitFor<FramesHeard>());

  for (int i = 1; i <= 5; ++i) {
    EXPECT_EQ(listener.receive(patience(1000)).text, "xcmd_notify:" + std::to_string(i) + ":" + kPairs);
    // The next comes 200 ms later; none follows the fifth.
    EXPECT_EQ(listener.receive(100).text, "");
  }
  EXPECT_EQ(listener.receive(400).text, "");

  const UdpPeer phone;
  phone.send("xcmd_req:4:cmd=info,\r\n", kModulePort, "255.255.255.255");
  const UdpPeer::Datagram answer = phone.receive(patience(1000));
  EXPECT_EQ(answer.text, "xcmd_rsp:4:"s + kPairs);
  EXPECT_EQ(answer.port, kModulePort);
  EXPECT_EQ(ask(phone, "xcmd_req:5:cmd=INFO\r\n"), "xcmd_rsp:5:ret=-1\r\n");
  EXPECT_EQ(module.stop(), "");
}

INSTANTIATE_TEST_SUITE_P(Channels, Provisioning, testing::Bool(),
                         [](const auto& channel) { return channel.param ? "Multicast" : "Broadcast"; });

TEST(VirtualModule, StaysOutsideOfOtherNetworks) {
  VirtualModuleOptions options = optionsOf(false);
  options.acceptedSsid = "abc";
  options.acceptedPassPhrase = "another";
  RunningModule module(options);
  const auto decoded = provision(module, true);
  ASSERT_TRUE(decoded);
  EXPECT_FALSE(decoded->accepted);
  const UdpPeer phone;
  EXPECT_EQ(ask(phone, kInfo), "");
}

TEST(VirtualModule, SaysWhyItCannotRun) {
  VirtualModuleOptions missing = optionsOf(false);
  missing.interface = "none0";
  EXPECT_EQ(RunningModule(missing).join(), "there is no interface none0");
  VirtualModuleOptions hostile = optionsOf(true);
  hostile.version = "1\r\nxcmd_notify:";
  EXPECT_EQ(RunningModule(hostile).join(), "the version holds a comma or something unprintable");
  VirtualModuleOptions longest = optionsOf(true);
  longest.extension = std::string(4096, 'x');
  EXPECT_EQ(RunningModule(longest).join(),
            "mac, version, capabilities and extension are too long for a line");
  const UdpPeer taken(kModulePort);
  EXPECT_EQ(RunningModule(optionsOf(true)).join(), "cannot open UDP port 25000: Address already in use");
}

TEST(VirtualModule, EndsWithItsInterface) {
  ASSERT_EQ(std::system("ip link add zor2 type veth peer name zor3 && ip link set zor2 up"), 0);
  const struct {
    const char *command, *error;
  } kCases[] = {{"ip link set zor2 down", "the interface zor2 is down"}, {"ip link del zor2", "disappeared"}};
  for (const auto& [command, error] : kCases) {
    ASSERT_EQ(std::system("ip link set zor2 up"), 0);
    VirtualModuleOptions options = optionsOf(false);
    options.interface = "zor2";
    RunningModule module(options);
    ASSERT_TRUE(module.isStarted());
    ASSERT_EQ(std::system(command), 0);
    const std::string end = module.join();
    EXPECT_NE(end.find(error), std::string::npos) << end;
  }
}

class Upgrade : public testing::Test {
 protected:
  Upgrade() { mkdtemp(directory_); }
  ~Upgrade() override { std::filesystem::remove_all(directory_); }

  std::string path() const { return directory_ + "/firmware.bin"s; }
  std::ptrdiff_t filesLeft() const {
    const std::filesystem::directory_iterator files(directory_);
    return std::distance(begin(files), end(files));
  }

  VirtualModuleOptions options() const {
    VirtualModuleOptions result = optionsOf(true);
    result.downloadPath = path();
    return result;
  }

  UdpPeer phone_;

 private:
  char directory_[32] = "/tmp/VirtualModule.XXXXXX";
};

std::string command(const HttpServer& server) {
  return "xcmd_req:123:cmd=upgrade,host=127.0.0.1,port=" + server.port() + ",file=/fw/app.bin\r\n";
}

TEST_F(Upgrade, FetchesTheFileByteForByte) {
  std::string firmware(3'000'000, '\0');
  for (std::size_t i = 0; i < firmware.size(); ++i) firmware[i] = static_cast<char>(i * 31 + i / 255);
  const HttpServer server("HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n\r\n" + firmware);
  RunningModule module(options());
  ASSERT_TRUE(module.isStarted());
  // A phone that misses the answer repeats the command.
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ask(phone_, command(server)), kAccepted);
  }
  ASSERT_TRUE(module.waitFor<DownloadDone>());
  EXPECT_EQ(ask(phone_, command(server)), kAccepted);
  EXPECT_EQ(ask(phone_, kStatus), "xcmd_rsp:321:status=100\r\n");
  EXPECT_EQ(server.connections(), 1);

  std::ifstream file(path(), std::ios::binary);
  EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(file), {}) == firmware);
  EXPECT_EQ(filesLeft(), 1);
  const auto requested = module.waitFor<UpgradeRequested>();
  ASSERT_TRUE(requested);
  EXPECT_EQ(requested->url, "http://127.0.0.1:" + server.port() + "/fw/app.bin");
}

TEST_F(Upgrade, KeepsNothingOfAnIncompleteFile) {
  const struct {
    const char *response, *failure;
  } kCases[] = {
      {"HTTP/1.1 302 Found\r\nLocation: /other\r\nContent-Length: 2\r\n\r\nno",
       "the server answered with status 302"},
      {"HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n", "the server answered with status 404"},
      {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nshort", "Transferred a partial file"},
      {"HTTP/1.1 200 OK\r\n\r\nendless", "the server does not say how long the file is"},
      {"HTTP/1.1 200 OK\r\nContent-Length: 4\r\nTransfer-Encoding: chunked\r\n\r\n9\r\nmore of "
       "it\r\n0\r\n\r\n",
       "the server does not say how long the file is"},
      {"HTTP/1.1 200 OK\r\nContent-Length: 67108865\r\n\r\nbig", "the file is longer than 67108864 bytes"},
      {"\x1b]0;hostile\a\r\n\r\n", "Unsupported protocol"},
  };
  for (const auto& [response, failure] : kCases) {
    const HttpServer server(response);
    RunningModule module(options());
    ASSERT_TRUE(module.isStarted());
    EXPECT_EQ(ask(phone_, command(server)), kAccepted);
    const auto failed = module.waitFor<DownloadFailed>();
    ASSERT_TRUE(failed) << response;
    EXPECT_EQ(failed->reason, failure);
    EXPECT_EQ(ask(phone_, kStatus), "xcmd_rsp:321:status=-6\r\n");
    EXPECT_EQ(phone_.receive(patience(1000)).text, "xcmd_rsp:123:ret=-6\r\n");
    EXPECT_EQ(filesLeft(), 0) << response;
  }
}

TEST_F(Upgrade, SaysWhyTheFileCannotBeStored) {
  const HttpServer server("");
  VirtualModuleOptions nowhere = options();
  nowhere.downloadPath = "/no/such/firmware.bin";
  RunningModule module(nowhere);
  ASSERT_TRUE(module.isStarted());
  EXPECT_EQ(ask(phone_, command(server)), kAccepted);
  const auto failed = module.waitFor<DownloadFailed>();
  ASSERT_TRUE(failed);
  EXPECT_EQ(failed->reason, "the file could not be stored: No such file or directory");
}

VirtualModule* interrupted = nullptr;

TEST_F(Upgrade, EndsWhenASignalStopsTheModule) {
  const HttpServer server("");
  RunningModule module(options());
  ASSERT_TRUE(module.isStarted());
  EXPECT_EQ(ask(phone_, command(server)), kAccepted);
  EXPECT_EQ(ask(phone_, "xcmd_req:123:cmd=upgrade,host=127.0.0.1,port=1,file=/other\r\n"),
            "xcmd_rsp:123:ret=-5\r\n");
  ASSERT_TRUE(waitUntil([&] { return server.connections() > 0; }, patience(5000)));

  interrupted = &module.module();
  std::signal(SIGUSR1, [](int) { interrupted->stop(); });
  const Clock::time_point start = Clock::now();
  std::raise(SIGUSR1);
  EXPECT_EQ(module.join(), "");
  EXPECT_LT(Clock::now() - start, 500ms);
  EXPECT_EQ(filesLeft(), 0);
}

TEST_F(Upgrade, CanBeAnsweredAfterItsStatus) {
  const HttpServer server("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
  VirtualModuleOptions late = options();
  late.misbehaviour = Misbehaviour::lateCommandAnswer;
  RunningModule module(late);
  ASSERT_TRUE(module.isStarted());
  EXPECT_TRUE(ask(phone_, command(server)).starts_with("xcmd_rsp:321:status="));
  ASSERT_TRUE(module.waitFor<DownloadDone>());
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(phone_.receive(20).text, "");
    EXPECT_EQ(ask(phone_, kStatus), "xcmd_rsp:321:status=50\r\n");
  }
  EXPECT_EQ(phone_.receive(patience(1000)).text, kAccepted);
  EXPECT_EQ(ask(phone_, kStatus), "xcmd_rsp:321:status=100\r\n");
}

TEST_F(Upgrade, ThatFailsIsAnsweredAfterItsStatus) {
  std::optional<HttpServer> server("");
  VirtualModuleOptions late = options();
  late.misbehaviour = Misbehaviour::lateCommandAnswer;
  RunningModule module(late);
  ASSERT_TRUE(module.isStarted());
  EXPECT_EQ(ask(phone_, command(*server)), "xcmd_rsp:321:status=0\r\n");
  ASSERT_TRUE(waitUntil([&] { return server->connections() > 0; }, patience(5000)));
  server.reset();  // Only now, or the failure could come before the status.
  ASSERT_TRUE(module.waitFor<DownloadFailed>());
  EXPECT_EQ(ask(phone_, kStatus), "xcmd_rsp:321:status=-6\r\n");
  EXPECT_EQ(phone_.receive(patience(1000)).text, "xcmd_rsp:123:ret=-6\r\n");
}

struct MisbehaviourCase {
  Misbehaviour misbehaviour;
  std::vector<std::string> requests, answers;
  int delayMs = 0;  ///< Of the first answer, at least.
};

/// Everything that comes until a quarter of a second of silence, without its line ends. Bytes that are not a
/// line count as "garbage"; a line from another port than the module's ends in a note of that.
std::vector<std::string> answersTo(const MisbehaviourCase& wanted) {
  const UdpPeer phone;
  std::vector<std::string> answers;
  for (const std::string& request : wanted.requests) {
    phone.send(request, kModulePort);
    int limitMs = wanted.delayMs + 250;
    for (UdpPeer::Datagram line; !(line = phone.receive(limitMs)).text.empty(); limitMs = 250) {
      const bool isLine = line.text.ends_with("\r\n") && line.text.find(':') == 8;
      answers.push_back(isLine ? line.text.substr(0, line.text.size() - 2) : "garbage");
      if (line.port != kModulePort) answers.back() += " from another port";
    }
  }
  return answers;
}

/// Runs the module in a network of the calling thread's own, so that others can use the same port.
void checkMisbehaviour(const MisbehaviourCase& wanted) {
  SCOPED_TRACE(static_cast<int>(wanted.misbehaviour));
  ASSERT_EQ(unshare(CLONE_NEWNET), 0);
  ASSERT_EQ(std::system("ip link set lo up"), 0);
  VirtualModuleOptions options = optionsOf(true, wanted.misbehaviour);
  options.interface = "lo";
  options.mac = "02:00:00:00:00:02";
  RunningModule module(options);
  ASSERT_TRUE(module.isStarted());
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(answersTo(wanted), wanted.answers);
  EXPECT_GE(Clock::now() - start, wanted.delayMs * 1ms);
}

TEST(VirtualModule, MisbehavesAsConfigured) {
  const std::string info = "xcmd_rsp:7:mac=02:00:00:00:00:02,ver=1.0.0,cap=0x1,name=virtual";
  const MisbehaviourCase kCases[] = {
      {Misbehaviour::none, {kInfo, kStatus}, {info, "xcmd_rsp:321:status=0"}},
      {Misbehaviour::silent, {kInfo, kStatus}, {}},
      {Misbehaviour::slowAnswers, {kInfo}, {info}, 2000},
      {Misbehaviour::otherPort, {kInfo}, {info + " from another port"}},
      {Misbehaviour::negativeStatus, {kStatus}, {"xcmd_rsp:321:status=-3"}},
      {Misbehaviour::garbageLines, {kInfo}, {"garbage", info, "garbage"}},
      {Misbehaviour::capitals, {kInfo}, {"XCMD_RSP" + info.substr(8)}},
  };
  std::vector<std::thread> threads;
  for (const MisbehaviourCase& wanted : kCases) threads.emplace_back(checkMisbehaviour, std::cref(wanted));
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace zor::receiver
