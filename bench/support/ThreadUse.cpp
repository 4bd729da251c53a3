#include "bench/support/ThreadUse.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace zor::bench {
namespace {

const std::filesystem::path kTasks = "/proc/self/task";

ThreadUse useOfOne(pid_t thread) {
  ThreadUse use;
  const std::filesystem::path task = kTasks / std::to_string(thread);
  double cpuNs = 0;
  std::ifstream(task / "schedstat") >> cpuNs;
  use.cpuMs = cpuNs / 1e6;
  std::ifstream status(task / "status");
  for (std::string word; status >> word;) {
    if (word == "voluntary_ctxt_switches:") status >> use.wakeUps;
  }
  return use;
}

}  // namespace

ThreadIds threadIds() {
  ThreadIds ids;
  for (const auto& task : std::filesystem::directory_iterator(kTasks)) {
    ids.push_back(std::stoi(task.path().filename()));
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

ThreadIds threadIdsSince(const ThreadIds& before) {
  ThreadIds added;
  const ThreadIds now = threadIds();
  std::set_difference(now.begin(), now.end(), before.begin(), before.end(), std::back_inserter(added));
  return added;
}

ThreadUse useOf(const ThreadIds& threads) {
  ThreadUse sum;
  for (const pid_t thread : threads) sum = sum + useOfOne(thread);
  return sum;
}

}  // namespace zor::bench
