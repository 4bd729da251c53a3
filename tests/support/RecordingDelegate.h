#pragma once

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ZOR/ZorSuite.h"

/// Keeps what it hears as "id|address|version|capabilities|extension", and on which thread.
class RecordingDelegate : public ZorSuiteDelegate {
 public:
  void onSearchFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                     const std::string& MODULE_CAP, const std::string& MODULE_EXT) override {
    searched.push_back(join(moduleId, MODULE_IP, MODULE_VER, MODULE_CAP, MODULE_EXT));
    thread = std::this_thread::get_id();
  }

  void onSmartFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                    const std::string& MODULE_CAP, const std::string& MODULE_EXT) override {
    announced.push_back(join(moduleId, MODULE_IP, MODULE_VER, MODULE_CAP, MODULE_EXT));
    thread = std::this_thread::get_id();
  }

  std::vector<std::string> searched, announced;
  std::thread::id thread;

 private:
  static std::string join(const std::string& id, const std::string& ip, const std::string& ver,
                          const std::string& cap, const std::string& ext) {
    return id + "|" + ip + "|" + ver + "|" + cap + "|" + ext;
  }
};

/// Runs the main queue until `list` holds `count` entries; false after `limitMs`.
inline bool drainUntil(const std::vector<std::string>& list, std::size_t count, int limitMs = 2000) {
  for (int waited = 0; list.size() < count && waited < limitMs; waited += 10) ZorRunMainQueue(10);
  return list.size() >= count;
}
