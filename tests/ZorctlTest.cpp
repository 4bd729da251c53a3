#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/UdpPeer.h"
#include "tests/support/Wait.h"

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using Arguments = std::vector<std::string>;

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// A zorctl that runs, its stdout and stderr in files.
class Zorctl {
 public:
  explicit Zorctl(Arguments arguments, int standardOutput = -1) : out_(std::tmpfile()), err_(std::tmpfile()) {
    arguments.insert(arguments.begin(), ZORCTL);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    process_ = fork();
    if (process_ != 0) return;
    dup2(standardOutput >= 0 ? standardOutput : fileno(out_), STDOUT_FILENO);
    dup2(fileno(err_), STDERR_FILENO);
    freopen("/dev/null", "r", stdin);
    signal(SIGINT, SIG_DFL);  // A background job inherits it ignored.
    execv(ZORCTL, argv.data());
    _exit(127);
  }
  ~Zorctl() {
    if (process_ > 0) kill(process_, SIGKILL);
    if (process_ > 0) waitpid(process_, nullptr, 0);
    std::fclose(out_);
    std::fclose(err_);
  }
  Zorctl(const Zorctl&) = delete;
  Zorctl& operator=(const Zorctl&) = delete;

  void interrupt(int signalNumber = SIGINT) { kill(process_, signalNumber); }

  /// The exit code, 128 and the signal's number for one that a signal ended.
  int wait() {
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

  /// True once stdout holds `text`; `meanwhile` is done again and again till then, at most for 20 s.
  bool prints(
      const std::string& text, const std::function<void()>& meanwhile = [] {}) {
    const auto isPrinted = [&] {
      if (contains(out(), text)) return true;
      meanwhile();
      std::this_thread::sleep_for(20ms);
      return false;
    };
    return waitUntil(isPrinted, 20000);
  }

  std::string out() const { return contents(out_); }
  std::string err() const { return contents(err_); }

  /// The first event of that name in the JSON lines, null without one. A line that is no JSON throws.
  json event(const std::string& name) const {
    std::istringstream lines(out());
    for (std::string line; std::getline(lines, line);) {
      if (const json event = json::parse(line); event.at("event") == name) return event;
    }
    return {};
  }

 private:
  static std::string contents(std::FILE* file) {
    std::string text(1 << 16, '\0');
    const ssize_t count = pread(fileno(file), text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return text;
  }

  std::FILE* out_;
  std::FILE* err_;
  pid_t process_;
};

constexpr std::uint16_t kDefaultPort = 25010;

bool isOneLine(const std::string& text) {
  return text.starts_with("zorctl: ") && text.find('\n') == text.size() - 1;
}

TEST(Zorctl, SaysInOneLineWhyItFails) {
  const std::string ssid32(32, 's');
  const struct {
    Arguments arguments;
    const char* says;
    int exitCode = 2;  // Told what cannot be.
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
      {{"provision", "--ssid", "s", "--pass-file", "/no/such"}, "cannot read '/no/such'"},
      {{"provision", "--ssid", "s", "--pass-file", "/dev/null"}, "--pass ''"},
      {{"provision", "--ssid", "s", "--pass", "p", "--timeout", "0"}, "--timeout"},
      {{"provision", "--ssid", "s", "--pass", "p", "--v3", "--mix-v3"}, "excludes"},
      {{"provision", "--ssid", "s", "--pass", "p", "--v3", "--append", "01"}, "excludes"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "1,2"}, "got 2"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "30,30,100,0,1,1,5,30,15,100,0,1,1,256"},
       "'256'"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "0,30,100,0,1,1,5,0,15,100,0,1,1,5"},
       "both channels"},
      {{"provision", "--ssid", "s", "--pass", "p", "--pace", "/no,such"}, "cannot read the file '/no,such'"},
      {{"listen", "--port", "65535"}, "--port"},
      {{"module", "--interface", "zor1", "--misbehave", "badly"}, "--misbehave"},
      {{"module", "--interface", "zor1", "--mac", "a,b"}, "without commas"},
      {{"module", "--interface", "zor1", "--extension", "\x1b"}, "\\x1b"},
      {{"search", "--count", "0"}, "--count"},
      {{"upgrade", "1.2.3", "http://a/b"}, "no IPv4 address"},
      {{"upgrade", "1.2.3.04", "http://a/b"}, "no IPv4 address"},
      {{"upgrade", "1.2.3.4", "http://a/" + std::string(504, 'b')}, "takes 513 bytes"},
      {{"upgrade", "1.2.3.4", "http://a/b,c"}, "%2C"},
      {{"provision", "--ssid", "s", "--pass=", "--timeout", "1", "--pace", "fast"}, "no module announced", 1},
      {{"search", "--count", "2", "--interval", "10"}, "no module answered", 1},
      {{"upgrade", "10.77.0.1", "https://a/b"}, "(-111)", 1},
      {{"upgrade", "10.77.0.1", "http://a"}, "(-112)", 1},
      {{"module", "--interface", "nowhere0"}, "nowhere0", 1},
  };
  for (const auto& [arguments, says, exitCode] : kCases) {
    Zorctl zorctl(arguments);
    EXPECT_EQ(zorctl.wait(), exitCode) << says;
    EXPECT_TRUE(exitCode == 1 || zorctl.out().empty()) << zorctl.out();
    EXPECT_TRUE(isOneLine(zorctl.err()) && contains(zorctl.err(), says)) << zorctl.err();
  }
}

TEST(Zorctl, ListenEscapesWhatModulesSay) {
  const std::string line = "xcmd_notify:1:mac=A\x1b[2J\xff\\,ver=1,cap=2,\"x=9\r\n";
  const UdpPeer module;
  for (const bool asJson : {false, true}) {
    Zorctl zorctl(asJson ? Arguments{"listen", "--json"} : Arguments{"listen"});
    const std::string expected =
        asJson ? R"({"event":"module_found","module_id":"A\u001b[2J\u00ff\\",)"
                 R"("address":"127.0.0.1","version":"1","capabilities":"2",)"
                 R"("extension":"\"x=9"})"
               : R"(found module A\x1b[2J\xff\\ at 127.0.0.1, version 1, capabilities 2, "x=9)";
    EXPECT_TRUE(zorctl.prints("\n" + expected + "\n", [&] { module.send(line, kDefaultPort); }))
        << zorctl.out();
    zorctl.interrupt();
    EXPECT_EQ(zorctl.wait(), 0);
  }
}

TEST(Zorctl, ProvisionStopsOnceTheModulesAreThereAndKeepsThePassPhraseToItself) {
  const UdpPeer module;
  Zorctl zorctl({"provision", "--ssid", "s", "--pass", "secret", "--expect", "2", "--json", "--verbose"});
  const auto announce = [&] {
    for (const char* mac : {"A", "", "A", "B"})
      module.send(std::string("xcmd_notify:1:mac=") + mac + ",ver=1", kDefaultPort);
  };
  EXPECT_TRUE(zorctl.prints("\"finished\"", announce)) << zorctl.out();
  EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
  EXPECT_EQ(zorctl.event("finished").at("modules"), 2);
  EXPECT_TRUE(contains(zorctl.err(), "pass=***"));
  EXPECT_FALSE(contains(zorctl.out() + zorctl.err(), "secret"));
}

TEST(Zorctl, InterruptedProvisionEndsAtOnce) {
  Zorctl zorctl({"provision", "--ssid", "s", "--pass", "p"});
  ASSERT_TRUE(zorctl.prints("telling modules"));
  const auto start = std::chrono::steady_clock::now();
  zorctl.interrupt();
  EXPECT_EQ(zorctl.wait(), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
  EXPECT_TRUE(contains(zorctl.err(), "stopped by a signal")) << zorctl.err();
}

TEST(Zorctl, ModuleDecodesWhatProvisionSends) {
  const UdpPeer other(kDefaultPort);  // Takes the usual port, so the module must be told another.
  Zorctl module({"module", "--interface", "zor1", "--mac", "M", "--json"});
  ASSERT_TRUE(module.prints("module_started"));
  Zorctl phone({"provision", "--ssid", "Caf\xc3\xa9", "--pass", "[a,b]", "--timeout", "20", "--json"});
  EXPECT_EQ(phone.wait(), 0) << phone.err();
  EXPECT_EQ(phone.event("started").at("port"), 25011);
  EXPECT_EQ(phone.event("module_found").at("module_id"), "M");
  const json decoded = module.event("decoded");
  EXPECT_EQ(decoded.at("ssid"), "Caf\u00c3\u00a9");
  EXPECT_EQ(decoded.at("pass_phrase"), "[a,b]");
  EXPECT_EQ(decoded.at("append"), "01b361");
  module.interrupt();
  EXPECT_EQ(module.wait(), 0);
}

TEST(Zorctl, UpgradeTellsTheModulesOwnCodeAndLeavesOnInterrupt) {
  Zorctl module({"module", "--interface", "zor0", "--provisioned", "--json"});
  ASSERT_TRUE(module.prints("module_started"));
  Zorctl refused({"upgrade", "10.77.0.1", "http://not_a_host/f", "--json"});
  EXPECT_EQ(refused.wait(), 1);
  EXPECT_EQ(refused.event("finished").at("status"), -2);

  const struct {
    const char *address, *phase, *says;
    int signalNumber;
  } cases[] = {{"10.77.0.9", "command sent", "has not answered yet", SIGHUP},
               {"10.77.0.1", "accepted", "goes on with the upgrade by itself", SIGQUIT}};
  for (const auto& c : cases) {
    Zorctl left({"upgrade", c.address, "http://10.77.0.9/f"});
    ASSERT_TRUE(left.prints(c.phase));
    left.interrupt(c.signalNumber);
    EXPECT_EQ(left.wait(), 1);
    EXPECT_TRUE(contains(left.err(), c.says)) << left.err();
  }
}

TEST(Zorctl, StdoutThatNobodyReadsIsNoCrash) {
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
