#include "cli/NewModules.h"

#include <strings.h>

#include <algorithm>
#include <utility>

namespace zor::cli {
namespace {

/// A flood of invented modules must not fill the memory.
constexpr std::size_t kMaxKept = 65'536;

bool has(const std::set<std::string>& ids, const std::string& id) {
  return std::ranges::any_of(
      ids, [&](const std::string& one) { return strcasecmp(one.c_str(), id.c_str()) == 0; });
}

}  // namespace

NewModules::NewModules(Output& output, std::function<bool()> canBeHeard)
    : output_(output), canBeHeard_(std::move(canBeHeard)) {}

bool NewModules::hasNew(const std::string& id) const {
  return has(new_, id);
}

bool NewModules::hasEarlier(const std::string& id) const {
  return has(earlier_, id);
}

void NewModules::takeAnnouncement(const FoundModule& module) {
  const bool isEarlier = earlier_.contains(module.id) || (!new_.contains(module.id) && !canBeHeard_());
  isEarlier ? takeEarlier(module) : takeNew(module);
}

void NewModules::takeEarlier(const FoundModule& module) {
  if (earlier_.size() >= kMaxKept || !earlier_.insert(module.id).second) return;
  output_.report(alreadyThereText(module), alreadyThereEvent(module));
}

void NewModules::takeNew(const FoundModule& module) {
  if (!module.id.empty() && new_.size() < kMaxKept) new_.insert(module.id);
  output_.report(foundText(module), foundEvent(module));
}

}  // namespace zor::cli
