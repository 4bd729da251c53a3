#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "tests/support/Wait.h"

/// Keeps what it hears as "id|address|version|capabilities|extension", and on which thread.
class RecordingDelegate : public ZorSuiteDelegate {
 public:
  using Text = const std::string&;

  void onSearchFound(Text id, Text address, Text version, Text capabilities, Text extension) override {
    keep(searched, id + "|" + address + "|" + version + "|" + capabilities + "|" + extension);
  }
  void onSmartFound(Text id, Text address, Text version, Text capabilities, Text extension) override {
    keep(announced, id + "|" + address + "|" + version + "|" + capabilities + "|" + extension);
  }

  std::vector<std::string> searched, announced;
  std::thread::id thread;
  /// Done in each callback; may replace itself.
  std::function<void()> act = [] {};

 private:
  void keep(std::vector<std::string>& list, Text heard) {
    list.push_back(heard);
    thread = std::this_thread::get_id();
    const std::function<void()> action = act;
    action();
  }
};

/// Runs the main queue until `list` holds `count` entries; false after `limitMs`.
inline bool drainUntil(const std::vector<std::string>& list, std::size_t count, int limitMs = 2000) {
  limitMs = patience(limitMs);
  for (int waited = 0; list.size() < count && waited < limitMs; waited += 10) ZorRunMainQueue(10);
  return list.size() >= count;
}
