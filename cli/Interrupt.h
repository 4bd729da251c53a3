#pragma once

#include "cli/ExitCode.h"

namespace zor::cli {

/// While it lives, turns SIGINT, SIGTERM, SIGHUP and SIGQUIT into a descriptor to poll, except those that
/// were ignored before. Only one may live at a time.
class Interrupt {
 public:
  /// Throws `RunFailure` when no pipe can be created.
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  /// True once a signal came or `raise` was called.
  bool raised() const { return wait(0); }

  /// Waits up to `waitMs` milliseconds, without limit if -1, until it is raised. Returns whether it is. Any
  /// thread.
  bool wait(int waitMs) const;

  /// Has the effect of a signal. Any thread.
  void raise() const;

  /// The exit code of a command that was stopped: which signal came first, or a failure if none did.
  ExitCode exitCode() const;

  /// Polls readable once a signal came.
  int descriptor() const { return pipe_[0]; }

 private:
  int pipe_[2];  ///< The end to read, then the end to write.
};

}  // namespace zor::cli
