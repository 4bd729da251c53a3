#pragma once

#include <mutex>
#include <string>
#include <thread>

#include "receiver/download/HttpFetch.h"

namespace zor::receiver {

/// Downloads an upgrade's file into a local file, on a thread of its own.
class Download {
 public:
  struct State {
    enum class Phase { running, done, failed };
    Phase phase = Phase::running;
    int percent = 0;      ///< 100 only when done.
    std::string failure;  ///< Why it failed, one line.
  };

  /// Starts at once. `url` must be made of checked parts only; HttpFetch describes `interface`, DownloadFile
  /// `path`.
  Download(const std::string& url, const std::string& interface, const std::string& path);
  /// Cancels a running download, removes its file and waits for its thread.
  ~Download();
  Download(const Download&) = delete;
  Download& operator=(const Download&) = delete;

  /// Readable after a change of the state until takeState(); -1 if the system had none left. Belongs to this
  /// object.
  int descriptor() const { return changed_; }

  /// The current state. Any thread.
  State state() const;
  /// The current state; makes the descriptor unreadable. Any thread.
  State takeState() const;

 private:
  void run();
  /// Returns why the file did not arrive; empty when it did.
  std::string fetch();
  void set(State state);

  HttpFetch fetch_;
  const std::string path_;
  int changed_;  ///< An eventfd.
  mutable std::mutex mutex_;
  State state_;
  std::thread thread_;
};

}  // namespace zor::receiver
