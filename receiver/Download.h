#pragma once

#include <mutex>
#include <string>
#include <thread>

#include "receiver/HttpFetch.h"

namespace zor::receiver {

/// One upgrade's file on its way into a file of ours, on a thread of its own.
class Download {
 public:
  struct State {
    enum class Phase { running, done, failed };
    Phase phase = Phase::running;
    int percent = 0;      ///< 100 only when done.
    std::string failure;  ///< Why it failed, one line.
  };

  /// Starts at once.
  /// \param url from checked parts only. \param interface see HttpFetch. \param path see DownloadFile.
  Download(const std::string& url, const std::string& interface, const std::string& path);
  /// Cancels a running download, whose file vanishes, and waits for its thread.
  ~Download();
  Download(const Download&) = delete;
  Download& operator=(const Download&) = delete;

  /// Readable after a change of the state until takeState(); -1 if the system gave none.
  /// Belongs to this object.
  int descriptor() const { return changed_; }

  /// The state as it is now. Any thread, like the one below.
  State state() const;
  /// The same, and makes the descriptor unreadable.
  State takeState() const;

 private:
  void run();
  /// Why the file did not arrive; empty when it did.
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
