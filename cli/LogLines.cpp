#include "cli/LogLines.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "ZOR/ZorSuite.h"
#include "cli/Escape.h"

namespace zor::cli {
namespace {

/// The line as it may be shown. All behind "pass=" goes, since a pass phrase may hold anything.
std::string masked(std::string_view line) {
  constexpr std::string_view kPassPhraseLabel = "pass=";
  const std::size_t label = line.find(kPassPhraseLabel);
  if (label == std::string_view::npos) return printable(line);
  return printable(line.substr(0, label + kPassPhraseLabel.size())) + "***";
}

std::string failure(const char* channel, int error) {
  if (error == 0) return {};
  return std::string("; the latest ") + channel + " send that failed: " + std::strerror(error);
}

}  // namespace

LogLines::LogLines(bool verbose) : state_(std::make_shared<State>()) {
  state_->verbose = verbose;
  ZorSetLogSink([state = state_](const char* line) { take(*state, line); });
}

std::string LogLines::failedSends() const {
  return failure("multicast", state_->multicastError) + failure("broadcast", state_->broadcastError);
}

void LogLines::take(State& state, const char* line) {
  constexpr std::string_view kWarning = ")warning ";
  const std::string_view text(line);
  if (text.size() > kWarning.size() && text.substr(1, kWarning.size()) == kWarning) {
    const long error = std::strtol(line + 1 + kWarning.size(), nullptr, 10);
    (text[0] == 'm' ? state.multicastError : state.broadcastError) = static_cast<int>(error);
  }
  if (state.verbose) std::fprintf(stderr, "log: %s\n", masked(line).c_str());
}

}  // namespace zor::cli
