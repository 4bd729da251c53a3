#include "cli/FoundModule.h"

#include "cli/Escape.h"

namespace zor::cli {
namespace {

std::string describeModule(const FoundModule& module) {
  std::string text = "module " + printable(module.id) + " at " + module.address;
  if (!module.version.empty()) text += ", version " + printable(module.version);
  if (!module.capabilities.empty()) text += ", capabilities " + printable(module.capabilities);
  if (!module.extension.empty()) text += ", " + printable(module.extension);
  return text;
}

Json makeEvent(const char* name, const FoundModule& module) {
  return {{"event", name},
          {"module_id", jsonText(module.id)},
          {"address", module.address},
          {"version", jsonText(module.version)},
          {"capabilities", jsonText(module.capabilities)},
          {"extension", jsonText(module.extension)}};
}

}  // namespace

std::string foundText(const FoundModule& module) {
  return "found " + describeModule(module);
}

Json foundEvent(const FoundModule& module) {
  return makeEvent("module_found", module);
}

std::string alreadyThereText(const FoundModule& module) {
  return "already there, not counted: " + describeModule(module);
}

Json alreadyThereEvent(const FoundModule& module) {
  return makeEvent("module_already_there", module);
}

}  // namespace zor::cli
