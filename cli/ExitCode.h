#pragma once

#include <stdexcept>

namespace zor::cli {

/// What zorctl exits with.
enum class ExitCode : int {
  success = 0,   ///< The command did what it was asked for.
  failure = 1,   ///< The run failed.
  wrongUse = 2,  ///< The command line asks for something that is not possible.
  // A signal stopped the run before it finished: 128 and the signal's number, as shells say it.
  hungUp = 129,       ///< SIGHUP.
  interrupted = 130,  ///< SIGINT: Ctrl-C.
  quit = 131,         ///< SIGQUIT.
  terminated = 143,   ///< SIGTERM.
};

/// A command line that cannot be carried out. The text says in one line what is wrong and what to do.
class WrongUse : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A run that a signal stopped before it finished. The text says in one line what that means.
class Stopped : public std::runtime_error {
 public:
  Stopped(const char* text, ExitCode code) : std::runtime_error(text), code_(code) {}

  /// Which signal it was.
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

/// A run that failed. The text says in one line what is wrong and what to try.
class RunFailure : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace zor::cli
