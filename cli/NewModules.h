#pragma once

#include <functional>
#include <set>
#include <string>

#include "cli/FoundModule.h"
#include "cli/ModuleDelegate.h"
#include "cli/Output.h"

namespace zor::cli {

/// Separates the modules that a run can have provisioned from those that were on the network before. A module
/// was there before when it answers the search ahead of the run, or announces itself before the packet can
/// have been heard whole; its later announcements do not count either.
class NewModules : public ModuleDelegate {
 public:
  /// `canBeHeard` says whether a module can have heard the packet whole by now. `output` outlives this.
  NewModules(Output& output, std::function<bool()> canBeHeard);

  /// The number of different new modules. One that announces itself from two addresses counts once, one
  /// without an id does not count.
  std::size_t count() const { return new_.size(); }

  /// The number of different modules that were there before.
  std::size_t earlierCount() const { return earlier_.size(); }

  /// True once the module `id`, letters of any case, is among the new ones.
  bool hasNew(const std::string& id) const;

  /// Likewise among those that were there before.
  bool hasEarlier(const std::string& id) const;

 private:
  void takeAnswer(const FoundModule& module) override { takeEarlier(module); }
  void takeAnnouncement(const FoundModule& module) override;
  void takeEarlier(const FoundModule& module);
  void takeNew(const FoundModule& module);

  Output& output_;
  std::function<bool()> canBeHeard_;
  std::set<std::string> new_;      ///< The ids of the new modules.
  std::set<std::string> earlier_;  ///< The ids of those that were there before.
};

}  // namespace zor::cli
