#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "tests/cli/Zorctl.h"
#include "tests/support/UdpPeer.h"

namespace {

using namespace std::chrono_literals;
using nlohmann::json;

constexpr char kOneSecondSent[] = "\"seconds_left\":3,";  // Of four, in which the packet was sent whole.

Arguments provision(const Arguments& further) {
  Arguments all = {"provision", "--ssid", "s", "--pass", "secret", "--json"};
  all.insert(all.end(), further.begin(), further.end());
  return all;
}

std::string announcement(const std::string& mac) {
  return "xcmd_notify:1:mac=" + mac + ",ver=1";
}

TEST(Provision, CountsTheModulesThatItCanHaveProvisioned) {
  Zorctl joined({"module", "--interface", "zor0", "--provisioned", "--mac", "J", "--json"});
  ASSERT_TRUE(joined.prints("module_started"));
  const UdpPeer module;
  Zorctl zorctl(provision({"--timeout", "4", "--linger", "0", "--expect", "2", "--verbose"}));
  ASSERT_TRUE(zorctl.prints("\"module_id\":\"A\"", [&] { module.send(announcement("A"), kDefaultPort); }));
  ASSERT_TRUE(zorctl.prints(kOneSecondSent)) << zorctl.out();
  for (const char* mac : {"J", "A,cap=2", "", "N", "N,cap=2"}) module.send(announcement(mac), kDefaultPort);
  ASSERT_TRUE(zorctl.prints("\"modules\":1")) << zorctl.out();
  module.send(announcement("O"), kDefaultPort);
  EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
  EXPECT_EQ(zorctl.event("finished").at("modules"), 2);
  for (const char* mac : {"A", "J"}) {
    EXPECT_TRUE(contains(zorctl.out(), R"("module_already_there","module_id":")" + std::string(mac)));
    EXPECT_FALSE(contains(zorctl.out(), R"("module_found","module_id":")" + std::string(mac)));
  }
  EXPECT_TRUE(contains(zorctl.err(), "pass=***"));
  EXPECT_FALSE(contains(zorctl.out() + zorctl.err(), "secret"));
}

TEST(Provision, WaitsForTheModuleNamed) {
  const UdpPeer module;
  Zorctl zorctl(provision({"--timeout", "4", "--module", "aB"}));
  ASSERT_TRUE(zorctl.prints(kOneSecondSent));
  module.send(announcement("C"), kDefaultPort);
  ASSERT_TRUE(zorctl.prints("\"modules\":1"));
  module.send(announcement("Ab"), kDefaultPort);
  EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
}

TEST(Provision, StopsSendingAtTheTimeoutAndListensOn) {
  const UdpPeer module;
  for (const char* version : {"--mix-v3", "--v3"}) {
    Zorctl zorctl(provision({"--timeout", "1", "--linger", "10", version}));
    ASSERT_TRUE(zorctl.prints("\"phase\":\"listening\"")) << zorctl.out();
    module.send(announcement("N"), kDefaultPort);
    EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
    EXPECT_LT(zorctl.event("finished").at("seconds"), 1.9);
  }
}

TEST(Provision, NamesTheCause) {
  const UdpPeer stranger;
  const Arguments once = provision({"--timeout", "1", "--linger", "0"});
  const Arguments search = {"search", "--count", "2", "--interval", "10", "--json"};
  const struct {
    const char* network;  ///< What is done to it first.
    Arguments arguments;
    const char* received;  ///< What reaches the listener meanwhile.
    const char *says, *says2, *saysNot;
  } kCases[] = {
      {"true", once, "", "no module announced itself, though", "SSID and pass phrase", "could not be sent"},
      {"true", once, "hello", "held no announcement", "", "SSID"},
      {"ip route add prohibit 239.0.0.0/8", once, "", "a multicast frame could not be sent",
       "only broadcast frames left this computer; multicast frames: the system does not permit it",
       "a broadcast frame could not"},
      {"ip route del 239.0.0.0/8 && ip route del default", once, "", "a broadcast frame could not be sent",
       "no frame left this computer: the system has no route for it", "SSID"},
      {"true", search, "", "a request could not be sent", "no request left this computer", "firewall admits"},
      {"ip route add prohibit default", once, "", "a multicast frame could not be sent",
       "no frame left this computer: the system does not permit it", "SSID"},
  };
  for (const auto& [network, arguments, received, says, says2, saysNot] : kCases) {
    ASSERT_EQ(std::system(network), 0) << network;
    Zorctl zorctl(arguments);
    EXPECT_TRUE(zorctl.prints("\"finished\"", [&, text = std::string(received)] {
      if (!text.empty()) stranger.send(text, kDefaultPort);
    }));
    EXPECT_EQ(zorctl.wait(), 1);
    EXPECT_TRUE(contains(zorctl.err(), says) && contains(zorctl.err(), says2)) << zorctl.err();
    EXPECT_FALSE(contains(zorctl.err(), saysNot)) << zorctl.err();
  }
}

TEST(Provision, SaysThatItStoodStill) {
  Zorctl zorctl(provision({"--timeout", "4", "--linger", "0"}));
  ASSERT_TRUE(zorctl.prints(kOneSecondSent));
  zorctl.interrupt(SIGSTOP);
  std::this_thread::sleep_for(3s);
  zorctl.interrupt(SIGCONT);
  EXPECT_EQ(zorctl.wait(), 1);
  EXPECT_TRUE(contains(zorctl.err(), "stood still for ")) << zorctl.err();
}

TEST(Provision, UsesTheInterfaceNamedAndShowsWhatTheSystemWouldChoose) {
  ASSERT_EQ(std::system("ip link add zor2 type veth peer name zor3 && ip address add 10.78.0.1/24 dev zor2 &&"
                        "ip link set zor2 up && ip link set zor3 up && ip route del default &&"
                        "ip route add default dev zor2"),
            0);
  Zorctl interfaces({"interfaces", "10.77.0.9"});
  EXPECT_EQ(interfaces.wait(), 0);
  EXPECT_TRUE(contains(interfaces.out(), "zor0             10.77.0.1        up\n")) << interfaces.out();
  EXPECT_TRUE(contains(interfaces.out(),
                       "\nmulticasts leave by zor2 from 10.78.0.1\n"
                       "broadcasts leave by zor2 from 10.78.0.1\n"
                       "datagrams to 10.77.0.9 leave by zor0 from 10.77.0.1\n"));

  Zorctl module({"module", "--interface", "zor1", "--json"});
  ASSERT_TRUE(module.prints("module_started"));
  Zorctl zorctl(provision({"--timeout", "2", "--linger", "0", "--interface", "zor0"}));
  EXPECT_TRUE(module.prints("\"decoded\""));
  zorctl.interrupt();
  zorctl.wait();
  const json source = {{"interface", "zor0"}, {"source", "10.77.0.1"}};
  EXPECT_EQ(zorctl.event("started").at("multicast"), source);
  EXPECT_EQ(zorctl.event("started").at("broadcast"), source);
}

}  // namespace
