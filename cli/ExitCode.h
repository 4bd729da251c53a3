#pragma once

#include <stdexcept>

namespace zor::cli {

/// What zorctl exits with.
enum ExitCode : int {
  kSuccess = 0,   ///< Did what it was asked for.
  kFailure = 1,   ///< The run failed or was stopped before it was through.
  kWrongUse = 2,  ///< The command line asks for something that cannot be.
};

/// A command line that cannot be obeyed. The text says in one line what is wrong and what to do.
class WrongUse : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A run that failed. The text says in one line what is the matter and what to try.
class RunFailure : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace zor::cli
