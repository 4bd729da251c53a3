#pragma once

#include <string>

#include "cli/Output.h"

namespace zor::cli {

/// A module as it describes itself: untrusted bytes.
struct FoundModule {
  std::string id;
  std::string address;
  std::string version;
  std::string capabilities;
  std::string extension;
};

/// "found module ID at ADDRESS, version ..." for a terminal.
std::string foundText(const FoundModule& module);

/// The "module_found" event.
Json foundEvent(const FoundModule& module);

/// "already there, not counted: module ID at ADDRESS, version ..." for a terminal.
std::string alreadyThereText(const FoundModule& module);

/// The "module_already_there" event.
Json alreadyThereEvent(const FoundModule& module);

}  // namespace zor::cli
