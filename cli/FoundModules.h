#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include "cli/FoundModule.h"
#include "cli/ModuleDelegate.h"

namespace zor::cli {

/// Passes on each module that a search or a listener reports, and counts the different ones.
class FoundModules : public ModuleDelegate {
 public:
  explicit FoundModules(std::function<void(const FoundModule&)> onFound) : onFound_(std::move(onFound)) {}

  /// The number of different modules reported. One that announces itself from two addresses counts once, one
  /// without an id does not count.
  std::size_t count() const { return ids_.size(); }

 private:
  void takeAnswer(const FoundModule& module) override { take(module); }
  void takeAnnouncement(const FoundModule& module) override { take(module); }
  void take(const FoundModule& module);

  std::function<void(const FoundModule&)> onFound_;
  std::set<std::string> ids_;  ///< The ids of the modules counted.
};

/// "1 module" or "3 modules".
std::string moduleCount(std::size_t count);

}  // namespace zor::cli
