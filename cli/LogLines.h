#pragma once

namespace zor::cli {

/// Keeps the library's log lines, which hold the pass phrase, out of the system log. With `verbose` they go
/// to stderr, the pass phrase masked; those that its reader does not take at once are dropped and counted,
/// since a worker must not wait for a reader. They are kept out after this is destroyed too: a worker may
/// outlive it.
class LogLines {
 public:
  explicit LogLines(bool verbose);
};

}  // namespace zor::cli
