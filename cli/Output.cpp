#include "cli/Output.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "cli/Command.h"
#include "cli/Escape.h"
#include "cli/Interrupt.h"
#include "cli/TextWriter.h"
#include "cli/TimeStamp.h"

namespace zor::cli {
namespace {

constexpr std::size_t kDefaultWidth = 80;

/// True when stdout is a terminal on which a line can be redrawn.
bool canRedraw() {
  const char* const kind = std::getenv("TERM");
  return isatty(STDOUT_FILENO) == 1 && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

}  // namespace

std::size_t terminalWidth() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kDefaultWidth;
  return size.ws_col;
}

Output::Output(const CommonOptions& options, const Interrupt& interrupt)
    : interrupt_(interrupt), json_(options.json), live_(!options.json && !options.verbose && canRedraw()) {}

ExitCode Output::exitCode() const {
  return failed_ ? ExitCode::failure : ExitCode::success;
}

ExitCode Output::stoppedCode() const {
  return interrupt_.exitCode();
}

bool Output::isGone() const {
  return gone_ || waitForClosedStdout(0);
}

void Output::waitWhileUseful() const {
  waitForClosedStdout(-1);
}

/// Waits up to `waitMs` until the reader of stdout has closed it or an interrupt came. Returns whether the
/// reader has.
bool Output::waitForClosedStdout(int waitMs) const {
  // Errors and hang-ups are seen without being asked for.
  pollfd wanted[] = {{STDOUT_FILENO, 0, 0}, {interrupt_.descriptor(), POLLIN, 0}};
  while (poll(wanted, 2, waitMs) < 0) continue;
  return wanted[0].revents != 0;
}

void Output::report(std::string_view text, const Json& event) {
  reportText(text);
  reportJson(event);
}

void Output::reportJson(const Json& event) {
  if (!json_) return;
  Json stamped = event;
  stamped["time"] = timeStamp();
  write(jsonLine(stamped) + "\n");
}

void Output::reportText(std::string_view text) {
  if (json_) return;
  clearLive();
  write(std::string(text) + "\n");
}

void Output::showLive(std::string_view text) {
  if (live_) write(liveLine_.draw(text, terminalWidth()));
}

void Output::showLive(std::string_view text, double share) {
  if (live_) showLive(withBar(text, share, terminalWidth()));
}

void Output::complain(std::string_view text) {
  clearLive();
  if (stderrGone_) return;
  stderrGone_ = writeText(STDERR_FILENO, "zorctl: " + std::string(text) + "\n", interrupt_) != 0;
}

void Output::clearLive() {
  write(liveLine_.clear(terminalWidth()));
}

void Output::write(std::string_view text) {
  if (gone_) return;
  const int error = writeText(STDOUT_FILENO, text, interrupt_);
  gone_ = error != 0;
  failed_ = gone_ && error != EPIPE && error != ETIMEDOUT;
  if (failed_) complain(std::string("stdout cannot be written: ") + std::strerror(error));
}

}  // namespace zor::cli
