#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/cli/Zorctl.h"
#include "tests/support/UdpPeer.h"

namespace {

using namespace std::chrono_literals;
using nlohmann::json;

TEST(Zorctl, SaysInOneLineWhyItFails) {
  const std::string ssid32(32, 's');
  const struct {
    Arguments arguments;
    const char* says;
    int exitCode = 2;  // Wrong use.
  } kCases[] = {
      {{}, "no subcommand"},
      {{"fly\x1b[2J"}, "fly\\x1b[2J"},
      {{"provision", "--pass", "p"}, "--ssid is required"},
      {{"provision", "--ssid", "s"}, "--pass-file"},
      {{"provision", "--ssid", "", "--pass", "p"}, "SSID is empty"},
      {{"provision", "--ssid", ssid32 + "s", "--pass", "p"}, "takes 33 bytes"},
      {{"provision", "--ssid", "s", "--pass", std::string(65, 'p')}, "takes 65 bytes"},
      {{"provision", "--ssid", "s", "--pass", "p", "--append", std::string(34, '0')}, "takes 17 bytes"},
      {{"provision", "--ssid", "s", "--pass", "p", "--append", "012"}, "not hexadecimal"},
      {{"provision", "--ssid", "s", "--pass", "p", "--append", "0x12"}, "not hexadecimal"},
      {{"provision", "--ssid", ssid32, "--pass", std::string(64, 'p'), "--append", "01"}, "room for 0 bytes"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pass-file", "f"}, "excludes"},
      {{"provision", "--ssid", "s", "--pass-file", "/no/such"},
       "'/no/such' cannot be read: No such file or directory"},
      {{"provision", "--ssid", "s", "--pass-file", "/dev/null"}, "--pass ''"},
      {{"provision", "--ssid", "s", "--pass", "p", "--timeout", "0"}, "--timeout"},
      {{"provision", "--ssid", "s", "--pass", "p", "--v3", "--mix-v3"}, "excludes"},
      {{"provision", "--ssid", "s", "--pass", "p", "--v3", "--append", "01"}, "excludes"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "1,2"}, "got 2"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "30,30,100,0,1,1,5,30,15,100,0,1,1,256"},
       "'256'"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "0,30,100,0,1,1,5,0,15,100,0,1,1,5"},
       "both channels"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "/no,such"}, "'/no,such' is no pace"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "slow"},
       "give default, fast, robust, brief, 14"},
      {{"listen", "--port", "65535"}, "--port"},
      {{"module", "--interface", "zor1", "--misbehave", "badly"}, "--misbehave"},
      {{"module", "--interface", "zor1", "--mac", "a,b"}, "without commas"},
      {{"module", "--interface", "zor1", "--extension", "\x1b"}, "\\x1b"},
      {{"search", "--count", "0"}, "--count"},
      {{"upgrade", "1.2.3", "http://a/b"}, "not an IPv4 address"},
      {{"upgrade", "1.2.3.04", "http://a/b"}, "not an IPv4 address"},
      {{"interfaces", "1.2.3"}, "not an IPv4 address"},
      {{"search", "--interface", "nowhere0"}, "no network interface 'nowhere0'"},
      {{"upgrade", "1.2.3.4", "http://a/" + std::string(504, 'b')}, "takes 513 bytes"},
      {{"upgrade", "1.2.3.4", "http://a/b,c"}, "%2C"},
      {{"provision", "--ssid", "s", "--pass=", "--timeout", "1", "--linger", "0"}, "no module announced", 1},
      {{"search", "--count", "2", "--interval", "10"}, "no module answered", 1},
      {{"upgrade", "10.77.0.1", "https://a/b"}, "(-111)"},
      {{"upgrade", "10.77.0.1", "http://a"}, "(-112)"},
      {{"module", "--interface", "nowhere0"}, "nowhere0", 1},
  };
  for (const auto& [arguments, says, exitCode] : kCases) {
    Zorctl zorctl(arguments);
    EXPECT_EQ(zorctl.wait(), exitCode) << says;
    EXPECT_TRUE(exitCode == 1 || zorctl.out().empty()) << zorctl.out();
    EXPECT_TRUE(isOneLine(zorctl.err()) && contains(zorctl.err(), says)) << zorctl.err();
  }
}

TEST(Zorctl, ListenEscapesTheTextsOfModules) {
  const std::string line = "xcmd_notify:1:mac=A\x1b[2J\xff\\,ver=1,cap=2,\"x=9\r\n";
  const UdpPeer module;
  for (const bool asJson : {false, true}) {
    Zorctl zorctl(asJson ? Arguments{"listen", "--json"} : Arguments{"listen"});
    const std::string expected =
        asJson ? R"({"event":"module_found","module_id":"A\u001b[2J\ufffd\\",)"
                 R"("module_id_hex":"411b5b324aff5c","address":"127.0.0.1","version":"1","capabilities":"2",)"
                 R"("extension":"\"x=9","time":")"
               : R"(found module A\x1b[2J\xff\\ at 127.0.0.1, version 1, capabilities 2, "x=9)";
    EXPECT_TRUE(zorctl.prints("\n" + expected, [&] { module.send(line, kDefaultPort); })) << zorctl.out();
    zorctl.interrupt();
    EXPECT_EQ(zorctl.wait(), 0);
  }
}

TEST(Zorctl, InterruptedProvisionEndsAtOnce) {
  Zorctl zorctl({"provision", "--ssid", "s", "--pass", "p"});
  ASSERT_TRUE(zorctl.prints("sending \"s\" as version 5"));
  const auto start = std::chrono::steady_clock::now();
  zorctl.interrupt();
  EXPECT_EQ(zorctl.wait(), 130);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
  EXPECT_TRUE(contains(zorctl.err(), "stopped by a signal")) << zorctl.err();
}

TEST(Zorctl, ModuleDecodesWhatProvisionSends) {
  const UdpPeer other(kDefaultPort);  // The module must announce itself on another port.
  Zorctl module({"module", "--interface", "zor1", "--mac", "M", "--show-secrets", "--json"});
  ASSERT_TRUE(module.prints("module_started"));
  Zorctl phone({"provision", "--ssid", "Caf\xc3\xa9", "--pass", "[a,b]", "--timeout", "20", "--json"});
  EXPECT_EQ(phone.wait(), 0) << phone.err();
  EXPECT_EQ(phone.event("started").at("port"), 25011);
  EXPECT_EQ(phone.event("module_found").at("module_id"), "M");
  const json decoded = module.event("decoded");
  EXPECT_EQ(decoded.at("ssid"), "Caf\u00e9");
  EXPECT_EQ(decoded.at("pass_phrase"), "[a,b]");
  EXPECT_EQ(decoded.at("append"), "01b361");
  module.interrupt();
  EXPECT_EQ(module.wait(), 0);
}

TEST(Zorctl, ModuleHidesThePassPhraseAndSumsUpSearchRequests) {
  Zorctl module({"module", "--interface", "zor1", "--mac", "M", "--json"});
  ASSERT_TRUE(module.prints("module_started"));
  Zorctl phone({"provision", "--ssid", "s", "--pass", "secret12", "--timeout", "20"});
  EXPECT_EQ(phone.wait(), 0) << phone.err();
  const json decoded = module.event("decoded");
  EXPECT_TRUE(decoded.contains("pass_phrase") && decoded.at("pass_phrase").is_null()) << decoded;
  EXPECT_FALSE(contains(module.out(), "secret12"));

  Zorctl search({"search", "--count", "5", "--interval", "10"});
  EXPECT_EQ(search.wait(), 0) << search.err();
  module.interrupt();
  EXPECT_EQ(module.wait(), 0);
  EXPECT_EQ(module.event("info_request").at("requests"), 1);
  EXPECT_TRUE(contains(module.out(), "\"requests\":4")) << module.out();
}

TEST(Zorctl, UpgradeReportsTheModulesCodeAndEndsOnInterrupt) {
  Zorctl module({"module", "--interface", "zor0", "--provisioned", "--json"});
  ASSERT_TRUE(module.prints("module_started"));
  Zorctl refused({"upgrade", "10.77.0.1", "http://not_a_host/f", "--json"});
  EXPECT_EQ(refused.wait(), 1);
  EXPECT_EQ(refused.event("finished").at("status"), -2);

  const struct {
    const char *address, *phase, *says;
    int signalNumber;
  } cases[] = {{"10.77.0.9", "command sent", "has not answered yet", SIGHUP},
               {"10.77.0.1", "accepted", "continues the upgrade on its own", SIGQUIT}};
  for (const auto& c : cases) {
    Zorctl left({"upgrade", c.address, "http://10.77.0.9/f"});
    ASSERT_TRUE(left.prints(c.phase));
    left.interrupt(c.signalNumber);
    EXPECT_EQ(left.wait(), 128 + c.signalNumber);
    EXPECT_TRUE(contains(left.err(), c.says)) << left.err();
  }
}

TEST(Zorctl, UpgradeSaysWhyNoAnswerCounted) {
  const std::string kAccepted = "xcmd_rsp:123:ret=0";
  const UdpPeer module(25000, "127.0.0.2"), confused(25000, "127.0.0.3"), frozen(25000, "127.0.0.4");
  const UdpPeer translated(0, "127.0.0.2");
  Zorctl toModule({"upgrade", "127.0.0.2", "http://a/b"}), toConfused({"upgrade", "127.0.0.3", "http://a/b"});
  Zorctl stopped({"upgrade", "127.0.0.4", "http://a/b"});
  const auto answer = [](const UdpPeer& asked, const UdpPeer& answering, const std::string& line) {
    answering.answer(asked.receive(10000), line);
  };
  answer(module, translated, kAccepted);
  answer(confused, confused, "hello");
  answer(frozen, frozen, kAccepted);
  ASSERT_TRUE(stopped.prints("accepted"));
  stopped.interrupt(SIGSTOP);
  EXPECT_EQ(toModule.wait(), 1);
  EXPECT_EQ(toConfused.wait(), 1);
  std::this_thread::sleep_for(500ms);
  stopped.interrupt(SIGCONT);
  EXPECT_EQ(stopped.wait(), 1);
  EXPECT_TRUE(contains(toModule.err(), "another port than 25000 were refused (1)")) << toModule.err();
  EXPECT_TRUE(contains(toConfused.err(), "no responses were refused (1)")) << toConfused.err();
  EXPECT_TRUE(contains(stopped.err(), "(-100) because zorctl stood still for ")) << stopped.err();
}

TEST(Zorctl, UpgradeSaysThatTheClockWentForward) {
  const UdpPeer module(25000, "127.0.0.2");
  ASSERT_EQ(setenv("LD_PRELOAD", STEPPED_CLOCK, 1), 0);
  Zorctl zorctl({"upgrade", "127.0.0.2", "http://a/b"});
  unsetenv("LD_PRELOAD");
  EXPECT_EQ(zorctl.wait(), 1);
  EXPECT_TRUE(contains(zorctl.err(), "because this computer's clock went forward by 20 s")) << zorctl.err();
}

TEST(Zorctl, SurvivesAStdoutThatIsClosedOrFull) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  close(pipe[0]);
  Zorctl zorctl({"search", "--count", "1"}, pipe[1]);
  close(pipe[1]);
  EXPECT_EQ(zorctl.wait(), 1);

  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  Zorctl listener({"listen"}, full);
  close(full);
  EXPECT_EQ(listener.wait(), 1);
  EXPECT_TRUE(isOneLine(listener.err())) << listener.err();
}

}  // namespace
