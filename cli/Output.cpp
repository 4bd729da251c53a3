#include "cli/Output.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "cli/Command.h"
#include "cli/ExitCode.h"
#include "cli/Interrupt.h"

namespace zor::cli {
namespace {

constexpr char kEraseLine[] = "\r\x1b[K";  // Carriage return and "erase in line", ECMA-48.
constexpr std::size_t kUsualWidth = 80;
constexpr int kLastWaitMs = 500;  ///< How long a reader that is behind may take after an interrupt.

std::size_t terminalWidth() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
  return size.ws_col;
}

}  // namespace

Output::Output(const CommonOptions& options, const Interrupt& interrupt)
    : interrupt_(interrupt),
      json_(options.json),
      live_(!options.json && !options.verbose && isatty(STDOUT_FILENO) == 1) {}

int Output::exitCode() const {
  return failed_ ? kFailure : kSuccess;
}

void Output::report(std::string_view text, const Json& event) {
  reportText(text);
  reportJson(event);
}

void Output::reportJson(const Json& event) {
  if (!json_) return;
  constexpr int kOneLine = -1;
  constexpr bool kAsciiOnly = true;
  write(event.dump(kOneLine, ' ', kAsciiOnly) + "\n");
}

void Output::reportText(std::string_view text) {
  if (json_) return;
  clearLive();
  write(std::string(text) + "\n");
}

void Output::showLive(std::string_view text) {
  if (!live_) return;
  // The last column stays free: a full line would wrap and could not be erased.
  write(kEraseLine + std::string(text.substr(0, terminalWidth() - 1)));
  drawn_ = true;
}

void Output::complain(std::string_view text) {
  clearLive();
  std::fprintf(stderr, "zorctl: %.*s\n", static_cast<int>(text.size()), text.data());
}

void Output::clearLive() {
  if (drawn_) write(kEraseLine);
  drawn_ = false;
}

void Output::write(std::string_view text) {
  while (!gone_ && !text.empty()) {
    if (!waitForRoom()) {
      gone_ = true;
      return;
    }
    // A pipe with room takes as much as this without blocking.
    const ssize_t count = ::write(STDOUT_FILENO, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR && errno != EAGAIN) {
      const int error = errno;
      gone_ = true;
      failed_ = error != EPIPE;
      if (failed_) complain(std::string("stdout cannot be written: ") + std::strerror(error));
    }
  }
}

/// Waits until stdout takes more, or has an error to tell. False when an interrupt came and it took no more.
bool Output::waitForRoom() const {
  pollfd wanted[] = {{STDOUT_FILENO, POLLOUT, 0}, {interrupt_.descriptor(), POLLIN, 0}};
  while (poll(wanted, 2, -1) < 0) continue;
  return wanted[0].revents != 0 || poll(wanted, 1, kLastWaitMs) > 0;
}

}  // namespace zor::cli
