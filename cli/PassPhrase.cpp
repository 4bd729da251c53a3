#include "cli/PassPhrase.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/Payload.h"

namespace zor::cli {
namespace {

/// Stops the terminal from showing what is typed, as long as it lives.
class NoEcho {
 public:
  NoEcho() {
    tcgetattr(STDIN_FILENO, &before_);
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  ~NoEcho() {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    std::fputc('\n', stderr);
  }
  NoEcho(const NoEcho&) = delete;
  NoEcho& operator=(const NoEcho&) = delete;

 private:
  termios before_{};
};

/// One line from the terminal, which hands it out whole.
std::string readLine(const Interrupt& interrupt) {
  pollfd wanted[] = {{STDIN_FILENO, POLLIN, 0}, {interrupt.descriptor(), POLLIN, 0}};
  while (!interrupt.raised() && poll(wanted, 2, -1) < 0) continue;
  if (interrupt.raised()) throw RunFailure("stopped before the pass phrase was given; nothing was sent");
  char line[4096];  // As much as a terminal takes in one line.
  const ssize_t count = read(STDIN_FILENO, line, sizeof line);
  if (count <= 0)
    throw WrongUse("no pass phrase was given: type one, or only the return key for an open network");
  std::string text(line, static_cast<std::size_t>(count));
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

std::string askPassPhrase(std::string_view ssid, const Interrupt& interrupt) {
  if (isatty(STDIN_FILENO) != 1) {
    throw WrongUse(
        "no terminal to ask for the pass phrase on: give --pass or --pass-file (--pass '' for an open "
        "network)");
  }
  std::fprintf(stderr, "Pass phrase of \"%s\" (empty for an open network): ", printable(ssid).c_str());
  const NoEcho noEcho;
  return readLine(interrupt);
}

std::string readPassPhraseFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  // One byte more than the longest pass phrase and its line end shows what is too long.
  char bytes[kLongestPassPhrase + 3];
  file.read(bytes, sizeof bytes);
  if (file.bad() || (!file.eof() && file.gcount() == 0)) {
    throw WrongUse("--pass-file: cannot read '" + printable(name) +
                   "': give a file that holds the pass phrase");
  }
  std::string text(bytes, static_cast<std::size_t>(file.gcount()));
  if (text.ends_with('\n')) text.pop_back();
  if (text.ends_with('\r')) text.pop_back();
  if (text.empty()) {
    throw WrongUse("--pass-file: '" + printable(name) +
                   "' holds no pass phrase: use --pass '' for an open network");
  }
  if (text.find('\n') != std::string::npos || text.find('\0') != std::string::npos) {
    throw WrongUse("--pass-file: '" + printable(name) +
                   "' holds more than a pass phrase: leave one line in it");
  }
  if (text.size() > kLongestPassPhrase) {
    throw WrongUse("--pass-file: '" + printable(name) + "' holds more than " +
                   std::to_string(kLongestPassPhrase) + " bytes: give a shorter pass phrase");
  }
  return text;
}

}  // namespace zor::cli
