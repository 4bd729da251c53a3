#include "cli/ProvisionProgress.h"

#include <utility>

namespace zor::cli {
namespace {

constexpr std::chrono::seconds kJsonProgress{1};
constexpr std::chrono::seconds kTextProgress{10};

/// "1 frame", "2 frames".
std::string counted(std::int64_t count, const char* thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::int64_t secondsLeft(const ProvisionState& state) {
  return std::chrono::ceil<std::chrono::seconds>(state.left).count();
}

std::string progressText(const ProvisionState& state) {
  const auto& [multicast, broadcast, listener] = state.report;
  std::string text = std::to_string(state.found) + " of " + std::to_string(state.expected) + " found, " +
                     std::to_string(secondsLeft(state)) + (state.sending ? " s left" : " s left to listen") +
                     ", " + counted(multicast.datagrams + broadcast.datagrams, "frame") + ", " +
                     counted(multicast.cycles + broadcast.cycles, "cycle");
  const std::int64_t failed = multicast.failedSends + broadcast.failedSends;
  if (failed > 0) text += ", " + std::to_string(failed) + " not sent";
  return text;
}

Json progressEvent(const ProvisionState& state) {
  const auto& [multicast, broadcast, listener] = state.report;
  return {{"event", "progress"},
          {"phase", state.sending ? "sending" : "listening"},
          {"seconds_left", secondsLeft(state)},
          {"frames", multicast.datagrams + broadcast.datagrams},
          {"cycles", multicast.cycles + broadcast.cycles},
          {"failed_sends", multicast.failedSends + broadcast.failedSends},
          {"modules", state.found}};
}

}  // namespace

void ProvisionProgress::show(const ProvisionState& state) {
  const std::string text = progressText(state);
  // The bar shrinks: it is the time left.
  output_.showLive(text, static_cast<double>(state.left.count()) / static_cast<double>(state.phase.count()));
  const auto now = Clock::now();
  const bool samePhase = std::exchange(sending_, state.sending) == state.sending;
  if (output_.isLive() || (samePhase && now < next_)) return;
  next_ = now + (output_.isText() ? kTextProgress : kJsonProgress);
  output_.report(text, progressEvent(state));
}

}  // namespace zor::cli
