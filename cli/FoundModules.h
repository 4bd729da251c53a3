#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include "ZOR/ZorSuite.h"
#include "cli/FoundModule.h"

namespace zor::cli {

/// Passes on each module that a search or a listener reports, and counts the different ones.
class FoundModules : public ZorSuiteDelegate {
 public:
  explicit FoundModules(std::function<void(const FoundModule&)> onFound) : onFound_(std::move(onFound)) {}

  /// The number of different modules reported. One that announces itself from two addresses counts once, one
  /// without an id does not count.
  std::size_t count() const { return ids_.size(); }

  void onSearchFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                     const std::string& MODULE_CAP, const std::string& MODULE_EXT) override;
  void onSmartFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                    const std::string& MODULE_CAP, const std::string& MODULE_EXT) override;

 private:
  void take(const FoundModule& module);

  std::function<void(const FoundModule&)> onFound_;
  std::set<std::string> ids_;  ///< The ids of the modules counted.
};

/// "1 module" or "3 modules".
std::string moduleCount(std::size_t count);

}  // namespace zor::cli
