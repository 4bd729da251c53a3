#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <string_view>

#include "tests/support/Wait.h"

namespace {

constexpr int kLimitMs = 20000;
constexpr unsigned short kColumns = 50;

/// A shell on a terminal of its own, in whose script `zorctl` is the tool.
class Terminal {
 public:
  explicit Terminal(const std::string& script) {
    winsize size{24, kColumns, 0, 0};
    shell_ = forkpty(&master_, nullptr, nullptr, &size);
    if (shell_ != 0) return;
    const std::string whole = "zorctl() { command " ZORCTL " \"$@\"; }\n" + script;
    execl("/bin/sh", "sh", "-c", whole.c_str(), nullptr);
    _exit(127);
  }
  ~Terminal() {
    close(master_);  // Hangs up.
    kill(shell_, SIGKILL);
    waitpid(shell_, nullptr, 0);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(const std::string& keys) const {
    EXPECT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  void resize(unsigned short columns) const {
    const winsize size{24, columns, 0, 0};
    EXPECT_EQ(ioctl(master_, TIOCSWINSZ, &size), 0);
  }

  /// Waits until `text` appears after what the last call found. Returns whether it does.
  bool shows(const std::string& text, int limitMs = kLimitMs) {
    const auto isShown = [&] {
      pollfd wanted{master_, POLLIN, 0};
      char bytes[4096];
      const ssize_t count = poll(&wanted, 1, 20) > 0 ? read(master_, bytes, sizeof bytes) : 0;
      if (count > 0) screen_.append(bytes, static_cast<std::size_t>(count));
      const std::size_t found = screen_.find(text, seen_);
      if (found != std::string::npos) seen_ = found + text.size();
      return found != std::string::npos;
    };
    return waitUntil(isShown, limitMs);
  }

  const std::string& screen() const { return screen_; }

 private:
  int master_ = -1;
  pid_t shell_ = -1;
  std::string screen_;
  std::size_t seen_ = 0;
};

/// Types Ctrl-C until the command ends: the thread sanitizer now and then puts off a signal until the next.
bool endsByCtrlC(Terminal& terminal) {
  const auto ends = [&] {
    terminal.type("\x03");
    return terminal.shows("code 130", 1000);
  };
  return waitUntil(ends, kLimitMs);
}

TEST(Terminal, ShowsWhatTheCommandPrints) {
  const struct {
    const char *script, *says;
  } kCases[] = {
      // A reader that has left ends what would wait for ever.
      {"zorctl listen | head -1; echo ended", "Ctrl-C ends\r\nended"},
      {"zorctl module --interface zor0 --provisioned | head -1; echo ended", "Ctrl-C ends\r\nended"},
      // A pass phrase from a pipe.
      {"echo secret12 | zorctl provision --ssid s --pass-file - --timeout 1", "sending \"s\""},
      {"zorctl provision --ssid s --pass-file /; echo $?", "Is a directory"},
      // What no WPA network can have.
      {"zorctl provision --ssid s --pass seven77 --timeout 1", "pass phrase of 7 bytes"},
      {"K=$(printf %064d 0); zorctl provision --ssid s --pass ${K}0 --timeout 1", "takes 65 bytes"},
      {"K=$(printf x%063d 0); zorctl provision --ssid s --pass $K --timeout 1", "pass phrase of 64 bytes"},
      // Characters: an accent, a direction mark, a private one, half of one.
      {"LC_ALL=C.UTF-8 zorctl provision --ssid \"$(printf "
       "'Caf\\303\\251\\342\\200\\256\\356\\200\\200\\303')\" "
       "--pass '' --timeout 1",
       "sending \"Caf\xc3\xa9\\xe2\\x80\\xae\\xee\\x80\\x80\\xc3\""},
      {"LC_ALL=C zorctl provision --ssid \"$(printf 'Caf\\303\\251')\" --pass '' --timeout 1",
       "sending \"Caf\\xc3\\xa9\""},
      {"LC_ALL=C.UTF-8 zorctl module --interface zor0 --mac \"$(printf '\\303\\251')\"",
       "must be printable ASCII"},
      // How much of a file was read.
      {"TERM=xterm zorctl decode " CAPTURES "radiotap.pcap", "87 frames [####"},
      // Spelling.
      {"zorctl serach", "did you mean 'search'?"},
      {"zorctl provision --sid s", "did you mean '--ssid'?"},
      {"zorctl flyaway; echo", "no subcommand 'flyaway'; see"},
  };
  for (const auto& [script, says] : kCases) {
    Terminal terminal(script);
    EXPECT_TRUE(terminal.shows(says)) << script << "\n" << terminal.screen();
  }
}

TEST(Terminal, HelpFitsIt) {
  for (const char* command : {"", "provision", "listen", "search", "upgrade", "module"}) {
    Terminal terminal(std::string("zorctl ") + command + " --help; echo ended");
    ASSERT_TRUE(terminal.shows("ended\r\n"));
    std::istringstream lines(terminal.screen());
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), kColumns + 1U) << line;
    EXPECT_EQ(terminal.screen().find(":INT"), std::string::npos);
  }
}

TEST(Terminal, RedrawsOneLineWithinItsWidth) {
  const std::string run =
      " zorctl provision --ssid s --pass-file /dev/stdin --timeout 3 --linger 0 <<.\nsecret12\n.\n";
  Terminal terminal("TERM=xterm" + run + "echo ended");
  ASSERT_TRUE(terminal.shows("1 found,")) << terminal.screen();
  terminal.resize(100);
  ASSERT_TRUE(terminal.shows("-]\x1b[J")) << "a bar in what is left of the width: " << terminal.screen();
  constexpr unsigned short kNarrow = 20;
  terminal.resize(kNarrow);
  ASSERT_TRUE(terminal.shows("\x1b[4A")) << "the line drawn before took more rows: " << terminal.screen();
  const std::size_t resized = terminal.screen().size();
  ASSERT_TRUE(terminal.shows("zorctl: ")) << terminal.screen();
  std::istringstream drawn(terminal.screen().substr(resized));
  for (std::string line; std::getline(drawn, line, '\r') && line.find("zorctl") == std::string::npos;)
    EXPECT_LE(line.substr(0, line.find('\x1b')).size(), kNarrow - 1U) << line;

  Terminal dumb("TERM=dumb" + run + "echo ended");
  ASSERT_TRUE(dumb.shows("ended")) << dumb.screen();
  EXPECT_EQ(dumb.screen().find('\x1b'), std::string::npos) << dumb.screen();
}

TEST(Terminal, NeverShowsThePassPhraseAfterASuspension) {
  for (const char* option : {"", "--pass-file -"}) {
    Terminal terminal("set -m; zorctl provision --ssid s --timeout 1 " + std::string(option) +
                      "; stty -a; fg; echo ended");
    ASSERT_TRUE(terminal.shows("Pass phrase")) << terminal.screen();
    terminal.type("\x1a");
    ASSERT_TRUE(terminal.shows(" echo ")) << terminal.screen();
    ASSERT_TRUE(terminal.shows("Pass phrase")) << terminal.screen();
    terminal.type("secret12\n");
    ASSERT_TRUE(terminal.shows("sending")) << terminal.screen();
    EXPECT_EQ(terminal.screen().find("secret12"), std::string::npos) << terminal.screen();
  }
}

TEST(Terminal, CtrlCEndsTheWaitForAPassPhrase) {
  const std::string pipe = testing::TempDir() + "pass-phrase-" + std::to_string(getpid());
  for (const std::string& option : {std::string{}, "--pass-file " + pipe}) {
    Terminal terminal("rm -f " + pipe + "; mkfifo " + pipe + "; set -m; zorctl provision --ssid s " + option +
                      "; echo code $?");
    int writer = -1;
    // The pipe can be opened once it is read.
    const auto waits = [&] { return (writer = open(pipe.c_str(), O_WRONLY | O_NONBLOCK)) >= 0; };
    ASSERT_TRUE(option.empty() ? terminal.shows("Pass phrase") : waitUntil(waits, kLimitMs));
    EXPECT_TRUE(endsByCtrlC(terminal)) << terminal.screen();
    close(writer);
  }
  unlink(pipe.c_str());
}

TEST(Terminal, CtrlCEndsACommandWhoseStderrNobodyReads) {
  constexpr int kStderr = 9;  // The shell knows descriptors of one digit.
  int pipe[2];
  ASSERT_EQ(pipe2(pipe, O_NONBLOCK), 0);
  while (write(pipe[1], "x", 1) == 1) continue;
  ASSERT_EQ(fcntl(pipe[1], F_SETFL, 0), 0);  // From here on, a write blocks.
  ASSERT_EQ(dup2(pipe[1], kStderr), kStderr);
  for (const char* command :
       {"provision --ssid s --pass short", "search --json --count 1000", "upgrade 10.77.0.9 http://a/b"}) {
    Terminal terminal("trap : INT; set -m; echo started; zorctl " + std::string(command) +
                      " --verbose 2>&9; echo code $?");
    ASSERT_TRUE(terminal.shows("started\r\n"));
    // The complaint about a short pass phrase comes before anything is printed.
    ASSERT_TRUE(std::string_view(command).ends_with("short") || terminal.shows("ing")) << terminal.screen();
    EXPECT_TRUE(endsByCtrlC(terminal)) << terminal.screen();
  }
  for (const int descriptor : {pipe[0], pipe[1], kStderr}) close(descriptor);
}

}  // namespace
