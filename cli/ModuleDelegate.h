#pragma once

#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/FoundModule.h"

namespace zor::cli {

/// A delegate that takes a report's five texts as one module.
class ModuleDelegate : public ZorSuiteDelegate {
 public:
  void onSearchFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                     const std::string& MODULE_CAP, const std::string& MODULE_EXT) final {
    takeAnswer({moduleId, MODULE_IP, MODULE_VER, MODULE_CAP, MODULE_EXT});
  }
  void onSmartFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                    const std::string& MODULE_CAP, const std::string& MODULE_EXT) final {
    takeAnnouncement({moduleId, MODULE_IP, MODULE_VER, MODULE_CAP, MODULE_EXT});
  }

 private:
  /// A module has answered the search.
  virtual void takeAnswer(const FoundModule& module) = 0;

  /// A module has announced itself.
  virtual void takeAnnouncement(const FoundModule& module) = 0;
};

}  // namespace zor::cli
