#include "cli/FoundModule.h"

#include "cli/Escape.h"

namespace zor::cli {

std::string foundText(const FoundModule& module) {
  std::string text = "found module " + printable(module.id) + " at " + module.address;
  if (!module.version.empty()) text += ", version " + printable(module.version);
  if (!module.capabilities.empty()) text += ", capabilities " + printable(module.capabilities);
  if (!module.extension.empty()) text += ", " + printable(module.extension);
  return text;
}

Json foundEvent(const FoundModule& module) {
  return {{"event", "module_found"},
          {"module_id", codePoints(module.id)},
          {"address", module.address},
          {"version", codePoints(module.version)},
          {"capabilities", codePoints(module.capabilities)},
          {"extension", codePoints(module.extension)}};
}

}  // namespace zor::cli
