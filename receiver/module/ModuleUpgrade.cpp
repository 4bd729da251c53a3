#include "receiver/module/ModuleUpgrade.h"

#include <utility>

namespace zor::receiver {
namespace {

using Phase = Download::State::Phase;

std::string urlOf(const ModuleRequest& request) {
  return "http://" + request.host + ":" + std::to_string(request.port) + request.file;
}

}  // namespace

ModuleUpgrade::ModuleUpgrade(std::string path, ModuleEventHandler onEvent)
    : path_(std::move(path)), onEvent_(std::move(onEvent)) {}

int ModuleUpgrade::command(const ModuleRequest& request, const std::string& interface, Instant now) {
  UpgradeRequested event{.url = {}, .result = request.result};
  if (request.result == ret::kAccepted) {
    std::string url = urlOf(request);
    const bool isSame = url == url_;
    const bool isRunning = download_ && download_->state().phase == Phase::running;
    if (isSame && (isRunning || now - latestCommand_ < kRepetition)) {
      latestCommand_ = now;
      return status() < 0 ? status() : ret::kAccepted;
    }
    if (isRunning) {
      event.result = ret::kBusy;
    } else {
      event.url = url_ = std::move(url);
      commandId_ = request.id;
      latestCommand_ = now;
      download_ = std::make_unique<Download>(url_, interface, path_);
    }
  }
  if (event.result != ret::kAccepted) {
    // A refused command costs its sender nothing, so a flood of them is one event.
    const bool isRepetition = now - latestRefusal_ < kRepetition;
    latestRefusal_ = now;
    if (isRepetition) return event.result;
  }
  onEvent_(event);
  return event.result;
}

int ModuleUpgrade::status() const {
  if (!download_) return 0;
  const Download::State state = download_->state();
  return state.phase == Phase::failed ? ret::kDownloadFailed : state.percent;
}

void ModuleUpgrade::reportChanges() {
  const Download::State state = download_->takeState();
  switch (state.phase) {
    case Phase::running:
      return onEvent_(DownloadProgress{state.percent});
    case Phase::done:
      return onEvent_(DownloadDone{path_});
    case Phase::failed:
      return onEvent_(DownloadFailed{state.failure, ret::kDownloadFailed});
  }
}

}  // namespace zor::receiver
