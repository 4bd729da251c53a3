#include "cli/PassPhrasePrompt.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>

#include "cli/Escape.h"
#include "cli/ExitCode.h"

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

}  // namespace zor::cli
