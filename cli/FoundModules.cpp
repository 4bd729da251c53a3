#include "cli/FoundModules.h"

namespace zor::cli {
namespace {

/// A flood of invented modules must not fill the memory.
constexpr std::size_t kMaxCounted = 65'536;

}  // namespace

void FoundModules::take(const FoundModule& module) {
  if (!module.id.empty() && ids_.size() < kMaxCounted) ids_.insert(module.id);
  onFound_(module);
}

std::string moduleCount(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " module" : " modules");
}

}  // namespace zor::cli
