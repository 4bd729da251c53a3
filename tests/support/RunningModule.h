#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "receiver/VirtualModule.h"

namespace zor::receiver {

inline VirtualModuleOptions optionsOf(bool provisioned, Misbehaviour misbehaviour = Misbehaviour::none) {
  VirtualModuleOptions options;
  options.interface = "zor1";
  options.provisioned = provisioned;
  options.misbehaviour = misbehaviour;
  return options;
}

/// A module that lives on a thread, and all that has happened to it.
class RunningModule {
 public:
  static constexpr std::chrono::milliseconds kLimit{5000};

  explicit RunningModule(VirtualModuleOptions options)
      : module_(std::move(options),
                [this](const ModuleEvent& event) {
                  const std::lock_guard lock(mutex_);
                  events_.push_back(event);
                  changed_.notify_all();
                }),
        thread_([this] { error_ = module_.run(); }) {}
  ~RunningModule() {
    if (thread_.joinable()) stop();
  }

  /// True once the module lives; one that is provisioned answers from then on.
  bool isStarted() { return waitFor(ModuleEvent::Kind::started).has_value(); }

  VirtualModule& module() { return module_; }

  /// What run() returned.
  std::string stop() {
    module_.stop();
    return join();
  }
  std::string join() {
    thread_.join();
    return error_;
  }

  std::optional<ModuleEvent> waitFor(ModuleEvent::Kind kind, std::chrono::milliseconds limit = kLimit) {
    std::unique_lock lock(mutex_);
    std::optional<ModuleEvent> found;
    changed_.wait_for(lock, limit, [&] {
      for (const ModuleEvent& event : events_) {
        if (event.kind == kind) found = event;
      }
      return found.has_value();
    });
    return found;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<ModuleEvent> events_;
  VirtualModule module_;
  std::string error_;
  std::thread thread_;
};

}  // namespace zor::receiver
