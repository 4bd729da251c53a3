#include <fcntl.h>
#include <linux/capability.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/SuiteTest.h"

namespace {

/// The default route leads to zor0. The modules are reached by wifi0, and lan0 is a third interface.
const std::string kFarAddress = "10.88.0.2";

using Strings = std::vector<std::string>;

bool shell(const std::string& command) {
  return std::system(command.c_str()) == 0;
}

/// The network namespace at the other end of wifi0 and lan0, where sockets of the test can be opened.
class FarEnd {
 public:
  FarEnd() {
    if (unshare(CLONE_NEWNET) != 0) throw std::runtime_error("no second network namespace");
    far_ = openNamespace();
    setns(near_, CLONE_NEWNET);
  }
  ~FarEnd() {
    close(near_);
    close(far_);
  }
  FarEnd(const FarEnd&) = delete;
  FarEnd& operator=(const FarEnd&) = delete;

  template <class Action>
  void visit(Action action) const {
    setns(far_, CLONE_NEWNET);
    action();
    setns(near_, CLONE_NEWNET);
  }

  /// Makes `near`, with `subnet`.1, and `far` over there, with `subnet`.2.
  void link(const std::string& near, const std::string& far, const std::string& subnet) const {
    const std::string path = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(far_);
    const auto up = [&](const std::string& name, const std::string& address) {
      EXPECT_TRUE(shell("ip address add " + address + "/24 dev " + name + " && ip link set up " + name));
    };
    EXPECT_TRUE(shell("ip link add " + near + " type veth peer name " + far + " netns " + path));
    up(near, subnet + ".1");
    visit([&] { up(far, subnet + ".2"); });
  }

 private:
  static int openNamespace() { return open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC); }

  int near_ = openNamespace();
  int far_ = -1;
};

/// Counts the IPv4 frames that arrive at an interface.
class FrameCounter {
 public:
  explicit FrameCounter(const char* interface)
      : descriptor_(socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(ETHERTYPE_IP))) {
    sockaddr_ll where{};
    where.sll_family = AF_PACKET;
    where.sll_protocol = htons(ETHERTYPE_IP);
    where.sll_ifindex = static_cast<int>(if_nametoindex(interface));
    if (where.sll_ifindex == 0 ||
        bind(descriptor_, reinterpret_cast<const sockaddr*>(&where), sizeof where) != 0) {
      throw std::runtime_error("cannot count frames");
    }
  }
  ~FrameCounter() { close(descriptor_); }
  FrameCounter(const FrameCounter&) = delete;
  FrameCounter& operator=(const FrameCounter&) = delete;

  /// How many since the latest call; those that the socket had no room for count as well.
  std::size_t take() {
    tpacket_stats counted{};
    socklen_t size = sizeof counted;
    getsockopt(descriptor_, SOL_PACKET, PACKET_STATISTICS, &counted, &size);
    return counted.tp_packets;
  }

 private:
  int descriptor_;
};

/// Leaves this thread, and those that it creates from now on, no more rights than any user has.
void dropRights() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct none[2]{};
  ASSERT_EQ(syscall(SYS_capset, &header, none), 0);
}

std::string boundInterface(std::int32_t descriptor) {
  char name[IFNAMSIZ] = "";
  socklen_t size = sizeof name;
  getsockopt(descriptor, SOL_SOCKET, SO_BINDTODEVICE, name, &size);
  return name;
}

class Interface : public SuiteTest {
 protected:
  Interface() {
    far.link("wifi0", "wifi1", "10.88.0");
    far.link("lan0", "lan1", "10.99.0");
    far.visit([&] { modules.emplace(25000); });
    s_ZorSmart5_McCharInterval = 1;
    s_ZorSmart5_BcCharInterval = 1;
    suite.DeviceSearchSetProperty(20, 3);
    system.clockAheadMs = 1000;  // The first requests are due at once.
  }
  ~Interface() override {
    ZorSetSocketHook(nullptr);
    ZorSetInterface("");
  }

  void startEverything() {
    ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
    startRun(false, 100);
    suite.DeviceSearch();
    suite.DeviceUpgrade(kFarAddress, "http://h/f");
  }

  /// Answers a search, and whatever an upgrade asks, until nothing asks any more.
  void answerAsModule() {
    while (s_threadSmartConfigMc || s_threadSmartConfigBc || s_threadDeviceSearch || s_threadUpgrade) {
      ZorRunMainQueue(0);
      const UdpPeer::Datagram request = modules->receive(20);
      if (request.text.find("cmd=info") != std::string::npos) {
        modules->answer(request, "xcmd_rsp:0:mac=M,ver=1,cap=2");
      } else if (!request.text.empty()) {
        modules->answer(request, "xcmd_rsp:123:ret=0");
        modules->answer(request, "xcmd_rsp:321:status=100");
      }
    }
    ZorRunMainQueue(0);
  }

  /// Tries every way to a socket, one sender at a time: there is none, and each says so by its own code.
  void expectNoSockets(const std::string& why, int error) {
    SCOPED_TRACE(why);
    system.forgetSent();
    for (std::int32_t (*open)() : {+[] { return ZorUdpInit(0); }, ZorUdpMcInit, ZorUdpBcInit}) {
      errno = 0;
      EXPECT_EQ(open(), -1);
      EXPECT_EQ(errno, error);
    }
    for (const std::int32_t port : {0, kPort}) EXPECT_EQ(suite.SmartConfigOnlineListen(port), -1);
    for (const bool multicast : {true, false}) {
      ZorTunable& other = multicast ? s_ZorSmart5_BcLen : s_ZorSmart5_McLen;
      const std::int32_t length = other;
      other = 0;
      startRun(false, 1000);
      EXPECT_TRUE(runIsOver());
      EXPECT_EQ(s_ZorDevice.smartStatus, multicast ? -101 : -201);
      other = length;
    }
    startRun(true, 1000);
    EXPECT_TRUE(log.has("listen smart3 failed"));
    suite.DeviceSearch();
    suite.DeviceUpgrade(kFarAddress, "http://h/f");
    EXPECT_TRUE(isOver(s_threadUpgrade) && isOver(s_threadDeviceSearch));
    EXPECT_EQ(suite.DeviceUpgradeProgress(), -121);
    EXPECT_TRUE(system.sent().empty());
  }

  FarEnd far;
  std::optional<UdpPeer> modules;
};

TEST_F(Interface, CarriesAllThatIsSent) {
  FrameCounter atDefault("zor1");
  std::optional<FrameCounter> atWifi, atLan;
  far.visit([&] {
    atWifi.emplace("wifi1");
    atLan.emplace("lan1");
  });
  const struct {
    const char* interface;
    bool privileged;
    const char* route;
  } kCases[] = {{"", true, "default dev zor0"},
                {"wifi0", true, "default dev zor0"},
                {"wifi0", false, "default dev zor0"},
                {"wifi0", false, "unreachable default"}};
  for (const auto& [name, privileged, route] : kCases) {
    SCOPED_TRACE(std::string(name) + (privileged ? " as root, " : " as a user, ") + route);
    ASSERT_TRUE(shell(std::string("ip route replace ") + route));
    if (!privileged) dropRights();
    ASSERT_TRUE(ZorSetInterface(name));
    system.forgetSent();
    delegate->searched.clear();
    startEverything();
    answerAsModule();

    EXPECT_EQ(suite.DeviceUpgradeProgress(), 100);
    EXPECT_EQ(s_ZorDevice.smartStatus, 0);
    std::size_t toEverybody = 0, toModule = 0;
    for (const SentDatagram& sent : system.sent())
      ++(sent.destination == kFarAddress ? toModule : toEverybody);
    EXPECT_GT(toEverybody, 50U);
    EXPECT_GT(toModule, 0U);
    const bool bound = *name != '\0';
    EXPECT_EQ(atDefault.take(), bound ? 0 : toEverybody) << "where the default route leads";
    EXPECT_EQ(atWifi->take(), bound ? toEverybody + toModule : toModule);
    EXPECT_EQ(atLan->take(), 0U);
    EXPECT_EQ(delegate->searched.size(), bound ? 1U : 0U) << "the search reaches the module, and hears it";
  }
}

TEST_F(Interface, CarriesAllThatIsHeard) {
  const Strings kOnWifi = {"10.88.0.1|10.88.0.2|1|1|", "10.88.0.255|10.88.0.2|1|1|"};
  const Strings kOnAll = {kOnWifi[0], kOnWifi[1], "10.99.0.1|10.99.0.2|1|1|", "10.99.0.255|10.99.0.2|1|1|",
                          "127.0.0.1|127.0.0.1|1|1|"};
  for (const bool bound : {false, true}) {
    ASSERT_TRUE(ZorSetInterface(bound ? "wifi0" : ""));
    ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
    Strings& heard = delegate->announced;
    heard.clear();
    for (const char* address : {"127.0.0.1", "10.99.0.255", "10.99.0.1", "10.88.0.255", "10.88.0.1"}) {
      const UdpPeer& sender = std::string(address) == "127.0.0.1" ? module : *modules;
      sender.send(std::string("xcmd_notify:0:mac=") + address + ",ver=1,cap=1", kPort, address);
    }
    const Strings& expected = bound ? kOnWifi : kOnAll;
    EXPECT_TRUE(drainUntil(heard, expected.size()));
    EXPECT_FALSE(drainUntil(heard, expected.size() + 1, 100));
    std::sort(heard.begin(), heard.end());
    EXPECT_EQ(heard, expected);
  }
}

TEST_F(Interface, IsKnownByItsNameAtEverySocket) {
  const auto bound = [] {
    const std::int32_t socket = ZorUdpMcInit();
    const std::string name = boundInterface(socket);
    ZorUdpClose(socket);
    return name;
  };
  EXPECT_EQ(bound(), "");
  ASSERT_TRUE(shell("ip link set lan0 name fifteen-letters"));
  for (const char* name : {"wifi0", "fifteen-letters", "lo"}) {
    EXPECT_TRUE(ZorSetInterface(name));
    EXPECT_EQ(bound(), name);
  }
  ASSERT_TRUE(ZorSetInterface("wifi0"));
  for (const std::string name : {"lan0", "wifi", "wifi00", "fifteen-letters!", "wifi0:1", "./wifi0", " "}) {
    EXPECT_FALSE(ZorSetInterface(name)) << name;
  }
  EXPECT_FALSE(ZorSetInterface(std::string_view("wifi0\0", 6)));
  EXPECT_FALSE(ZorSetInterface(std::string(10000, 'x')));
  EXPECT_EQ(bound(), "wifi0") << "a refused name changes nothing";

  startRun(false, 60000);
  ASSERT_TRUE(system.waitForSends(20, 2000));
  ASSERT_TRUE(shell("ip link delete wifi0"));
  EXPECT_TRUE(runIsOver());
  EXPECT_LT(s_ZorDevice.smartStatus, -100);
  expectNoSockets("the interface is gone", ENODEV);
  far.link("wifi0", "wifi1", "10.88.0");
  EXPECT_EQ(bound(), "wifi0");
  startEverything();
  answerAsModule();
  EXPECT_EQ(delegate->searched.size(), 1U);

  EXPECT_TRUE(ZorSetInterface(""));
  EXPECT_EQ(bound(), "");
}

TEST_F(Interface, TheHookSeesEverySocketBeforeItIsBound) {
  std::mutex mutex;
  std::map<std::thread::id, Strings> seen;
  ZorSetSocketHook([&](std::int32_t descriptor) {
    sockaddr_in local{};
    socklen_t size = sizeof local;
    EXPECT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr*>(&local), &size), 0);
    EXPECT_EQ(local.sin_port, 0);
    const std::lock_guard lock(mutex);
    seen[std::this_thread::get_id()].push_back(boundInterface(descriptor));
    return true;
  });
  ASSERT_TRUE(ZorSetInterface("wifi0"));
  startEverything();
  answerAsModule();
  EXPECT_EQ(seen[std::this_thread::get_id()], Strings{"wifi0"}) << "the listener's";
  EXPECT_EQ(seen.size(), 5U) << "both senders', the search's and the upgrade's on their own threads";

  seen.clear();
  for (const std::int32_t socket : {ZorUdpInit(0), ZorUdpMcInit(), ZorUdpBcInit()}) ZorUdpClose(socket);
  EXPECT_EQ(seen[std::this_thread::get_id()].size(), 3U);
  ZorSetSocketHook(nullptr);
  ZorUdpClose(ZorUdpInit(0));
  EXPECT_EQ(seen[std::this_thread::get_id()].size(), 3U);
}

TEST_F(Interface, AHookThatRefusesOrThrowsLeavesNoSocket) {
  const std::int32_t lowest = dup(0);
  close(lowest);
  ZorSetSocketHook([](std::int32_t) {
    errno = EINTR;
    return false;
  });
  expectNoSockets("refused", EPERM);
  ZorSetSocketHook([](std::int32_t) -> bool { throw std::runtime_error("the application's"); });
  expectNoSockets("thrown", EPERM);
  ZorSetSocketHook([](std::int32_t) -> bool { throw 1; });
  expectNoSockets("thrown, and no exception of the standard library", EPERM);
  EXPECT_EQ(dup(0), lowest) << "what was refused is closed";
}

TEST_F(Interface, AHookMayEndItsThread) {
  const std::int32_t lowest = dup(0);
  close(lowest);
  ZorSetSocketHook([](std::int32_t) -> bool { pthread_exit(nullptr); });
  pthread_t thread;
  const auto open = [](void*) -> void* {
    ZorUdpInit(0);
    return &s_ZorDevice;
  };
  ASSERT_EQ(pthread_create(&thread, nullptr, open, nullptr), 0);
  void* returned = &thread;
  EXPECT_EQ(pthread_join(thread, &returned), 0);
  EXPECT_EQ(returned, nullptr) << "the application's thread ended in the hook";
  startRun(false, 60000);
  EXPECT_TRUE(runIsOver()) << "and so did both senders";
  EXPECT_EQ(dup(0), lowest) << "no socket is left";
}

TEST_F(Interface, AHookMayReplaceItself) {
  auto token = std::make_shared<int>(0);
  std::weak_ptr<int> alive = token;
  ZorSetSocketHook([token = std::move(token), &alive](std::int32_t) {
    ZorSetSocketHook(nullptr);
    ZorSetInterface("lan0");
    return !alive.expired();
  });
  const std::int32_t socket = ZorUdpInit(0);
  EXPECT_GE(socket, 0) << "no lock was held, and the hook was whole to its end";
  EXPECT_TRUE(alive.expired());
  EXPECT_EQ(boundInterface(socket), "") << "what is set meanwhile is for the next socket";
  ZorUdpClose(socket);
}

}  // namespace
