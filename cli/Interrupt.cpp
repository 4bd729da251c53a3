#include "cli/Interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace zor::cli {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

volatile std::sig_atomic_t writeEnd = -1;
volatile std::sig_atomic_t firstSignal = 0;

/// A byte that a full pipe loses does no harm: the descriptor is readable already.
void writeByte(int descriptor) {
  const int savedErrno = errno;
  const ssize_t count = write(descriptor, "", 1);
  static_cast<void>(count);
  errno = savedErrno;
}

extern "C" void onSignal(int number) {
  if (firstSignal == 0) firstSignal = number;
  writeByte(writeEnd);
}

/// Skips signals that are ignored: nohup ignores SIGHUP, a shell SIGINT and SIGQUIT for background jobs.
void handleSignals(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (const int number : kSignals) {
    struct sigaction before {};
    sigaction(number, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
  }
}

}  // namespace

Interrupt::Interrupt() {
  if (pipe(pipe_) != 0) {
    throw RunFailure("no pipe could be created: close other programs or raise 'ulimit -n', then try again");
  }
  for (const int end : pipe_) {
    fcntl(end, F_SETFD, FD_CLOEXEC);
    fcntl(end, F_SETFL, O_NONBLOCK);
  }
  writeEnd = pipe_[1];
  firstSignal = 0;
  handleSignals(onSignal);
}

Interrupt::~Interrupt() {
  handleSignals(SIG_DFL);
  close(pipe_[0]);
  close(pipe_[1]);
}

bool Interrupt::wait(int waitMs) const {
  pollfd wanted{pipe_[0], POLLIN, 0};
  return poll(&wanted, 1, waitMs) > 0;
}

ExitCode Interrupt::exitCode() const {
  constexpr int kSignalBase = 128;
  return firstSignal == 0 ? ExitCode::failure : static_cast<ExitCode>(kSignalBase + firstSignal);
}

void Interrupt::raise() const {
  writeByte(pipe_[1]);
}

}  // namespace zor::cli
