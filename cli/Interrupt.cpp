#include "cli/Interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "cli/ExitCode.h"

namespace zor::cli {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

volatile std::sig_atomic_t writeEnd = -1;

/// A full pipe loses the byte, which is no loss: the descriptor is readable already.
void writeByte(int descriptor) {
  const int savedErrno = errno;
  const ssize_t count = write(descriptor, "", 1);
  static_cast<void>(count);
  errno = savedErrno;
}

extern "C" void onSignal(int) {
  writeByte(writeEnd);
}

/// Leaves a signal alone that is ignored: nohup, or the shell for a background job, had it so.
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
  if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) {
    throw RunFailure("the system gives no pipe: close other programs or raise 'ulimit -n', then try again");
  }
  writeEnd = pipe_[1];
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

void Interrupt::raise() const {
  writeByte(pipe_[1]);
}

}  // namespace zor::cli
