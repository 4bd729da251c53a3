#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "receiver/module/VirtualModule.h"
#include "tests/support/Wait.h"

namespace zor::receiver {

inline VirtualModuleOptions optionsOf(bool provisioned, Misbehaviour misbehaviour = Misbehaviour::none) {
  VirtualModuleOptions options;
  options.interface = "zor1";
  options.provisioned = provisioned;
  options.misbehaviour = misbehaviour;
  return options;
}

/// A module that runs on a thread, and all its events.
class RunningModule {
 public:
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

  /// Waits until the module has started; a provisioned one answers from then on. Returns false when it has
  /// not in time.
  bool isStarted() { return waitFor<ModuleStarted>().has_value(); }

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

  /// Waits for an event of this kind and returns the latest; nothing when none comes in time.
  template <class Event>
  std::optional<Event> waitFor() {
    std::unique_lock lock(mutex_);
    std::optional<Event> found;
    changed_.wait_for(lock, std::chrono::milliseconds(patience(5000)), [&] {
      for (const ModuleEvent& event : events_) {
        if (const auto* kind = std::get_if<Event>(&event)) found = *kind;
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
