#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"

/// Keeps the library's log lines for as long as it lives.
class LogCapture {
 public:
  LogCapture() {
    ZorSetLogSink([kept = kept_](const char* line) {
      const std::lock_guard lock(kept->mutex);
      kept->lines.emplace_back(line);
    });
  }
  ~LogCapture() { ZorSetLogSink(nullptr); }

  std::vector<std::string> lines() const {
    const std::lock_guard lock(kept_->mutex);
    return kept_->lines;
  }

  std::ptrdiff_t count(const std::string& line) const {
    const std::vector<std::string> all = lines();
    return std::count(all.begin(), all.end(), line);
  }
  bool has(const std::string& line) const { return count(line) > 0; }

 private:
  struct Kept {
    std::mutex mutex;
    std::vector<std::string> lines;
  };
  std::shared_ptr<Kept> kept_ = std::make_shared<Kept>();
};
