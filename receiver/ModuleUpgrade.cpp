#include "receiver/ModuleUpgrade.h"

#include <utility>

namespace zor::receiver {
namespace {

using Phase = Download::State::Phase;

std::string urlOf(const ModuleRequest& request) {
  return "http://" + request.host + ":" + std::to_string(request.port) + request.file;
}

}  // namespace

ModuleUpgrade::ModuleUpgrade(std::string path, VirtualModule::EventHandler onEvent)
    : path_(std::move(path)), onEvent_(std::move(onEvent)) {}

int ModuleUpgrade::command(const ModuleRequest& request, const std::string& interface, Instant now) {
  ModuleEvent event;
  event.kind = ModuleEvent::Kind::upgradeRequest;
  event.result = request.result;
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
      event.text = url_ = std::move(url);
      commandId_ = request.id;
      latestCommand_ = now;
      download_ = std::make_unique<Download>(url_, interface, path_);
    }
  }
  if (event.result != ret::kAccepted) {
    // Refusals cost their sender nothing, so a flood of them is one event.
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
  ModuleEvent event;
  event.percent = state.percent;
  switch (state.phase) {
    case Phase::running:
      event.kind = ModuleEvent::Kind::downloadProgress;
      break;
    case Phase::done:
      event.kind = ModuleEvent::Kind::downloadDone;
      event.text = path_;
      break;
    case Phase::failed:
      event.kind = ModuleEvent::Kind::downloadFailed;
      event.text = state.failure;
      event.result = ret::kDownloadFailed;
      break;
  }
  onEvent_(event);
}

}  // namespace zor::receiver
