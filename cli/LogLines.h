#pragma once

#include <atomic>
#include <memory>
#include <string>

namespace zor::cli {

/// Takes the library's log lines away from the system log, since they hold the pass phrase. With `verbose`
/// they go to stderr, the pass phrase masked. Lines are still taken when this is destroyed: a worker may
/// outlive it.
class LogLines {
 public:
  explicit LogLines(bool verbose);

  /// What the system said to the latest send that failed on each channel, as a sentence for a diagnosis;
  /// empty when every send went through.
  std::string failedSends() const;

 private:
  struct State {
    bool verbose = false;
    std::atomic<int> multicastError{0};
    std::atomic<int> broadcastError{0};
  };
  static void take(State& state, const char* line);

  std::shared_ptr<State> state_;
};

}  // namespace zor::cli
