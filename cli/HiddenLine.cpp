#include "cli/HiddenLine.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>

#include "cli/ExitCode.h"
#include "cli/TextWriter.h"

namespace zor::cli {
namespace {

/// A signal that comes just before the wait for input does not end that wait; it is seen this much later.
constexpr int kKeyPollMs = 100;

volatile std::sig_atomic_t suspendAsked = 0;
volatile std::sig_atomic_t continued = 0;

extern "C" void onJobSignal(int number) {
  (number == SIGCONT ? continued : suspendAsked) = 1;
}

/// While it lives, `onJobSignal` handles a signal, unless that was ignored before.
class Handler {
 public:
  explicit Handler(int number) : number_(number) {
    sigaction(number, nullptr, &before_);
    if (before_.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = onJobSignal;
    action.sa_flags = SA_RESTART;  // For tcsetattr; a wait with poll ends all the same.
    sigaction(number, &action, nullptr);
  }
  ~Handler() { sigaction(number_, &before_, nullptr); }
  Handler(const Handler&) = delete;
  Handler& operator=(const Handler&) = delete;

 private:
  int number_;
  struct sigaction before_ {};
};

/// While it lives, the terminal shows a prompt and does not show what is typed.
class Prompt {
 public:
  Prompt(const std::string& text, const Interrupt& interrupt) : text_(text), interrupt_(interrupt) {
    tcgetattr(STDIN_FILENO, &before_);
    show();
  }
  ~Prompt() { restore(); }
  Prompt(const Prompt&) = delete;
  Prompt& operator=(const Prompt&) = delete;

  /// Suspends the process if Ctrl-Z asked for that. Shows the prompt again if it was continued.
  void obeyJobControl() {
    if (suspendAsked != 0) suspend();
    if (continued == 0) return;
    continued = 0;
    show();
  }

 private:
  void show() {
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    writeText(STDERR_FILENO, text_, interrupt_);
  }

  void restore() {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    writeText(STDERR_FILENO, "\n", interrupt_);
  }

  /// Returns once the process was continued, or at once if nobody could continue it.
  void suspend() {
    suspendAsked = 0;
    restore();
    const auto handler = std::signal(SIGTSTP, SIG_DFL);
    ::raise(SIGTSTP);
    std::signal(SIGTSTP, handler);
    continued = 1;
  }

  const std::string& text_;
  const Interrupt& interrupt_;
  termios before_{};
};

}  // namespace

std::string askHidden(const std::string& prompt, const Interrupt& interrupt) {
  suspendAsked = 0;
  continued = 0;
  const Handler onSuspend(SIGTSTP);
  const Handler onContinue(SIGCONT);
  Prompt shown(prompt, interrupt);
  pollfd wanted[] = {{STDIN_FILENO, POLLIN, 0}, {interrupt.descriptor(), POLLIN, 0}};
  while (poll(wanted, 2, kKeyPollMs) <= 0) shown.obeyJobControl();
  if (interrupt.raised())
    throw Stopped("stopped before the pass phrase was given; nothing was sent", interrupt.exitCode());
  char line[4096];  // The longest line that a terminal takes.
  const ssize_t count = read(STDIN_FILENO, line, sizeof line);
  if (count <= 0)
    throw WrongUse("no pass phrase was given: type one, or press only Return for an open network");
  std::string text(line, static_cast<std::size_t>(count));
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace zor::cli
