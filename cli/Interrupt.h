#pragma once

namespace zor::cli {

/// Turns SIGINT, SIGTERM, SIGHUP and SIGQUIT, less those that the caller had ignored, into a descriptor to
/// poll, as long as it lives. One at a time.
class Interrupt {
 public:
  /// Throws `RunFailure` when the system gives no pipe.
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  /// True once a signal came or `raise` was called.
  bool raised() const { return wait(0); }

  /// Waits at most `waitMs` milliseconds, -1 for ever. Returns what `raised` does then. Any thread.
  bool wait(int waitMs) const;

  /// Does what a signal does. Any thread.
  void raise() const;

  /// Polls readable once a signal came.
  int descriptor() const { return pipe_[0]; }

 private:
  int pipe_[2];
};

}  // namespace zor::cli
