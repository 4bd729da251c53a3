#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace zor::receiver {

/// A file that appears under its name only when it is whole: it grows under a temporary name beside it,
/// readable by its owner alone, and vanishes with this object unless finish() was called. Not thread-safe;
/// calls block on the disk.
class DownloadFile {
 public:
  /// \param path where the file will appear; empty: all octets are dropped and no file is made.
  explicit DownloadFile(std::string path) : path_(std::move(path)) {}
  ~DownloadFile();
  DownloadFile(const DownloadFile&) = delete;
  DownloadFile& operator=(const DownloadFile&) = delete;

  /// Each returns false when the system failed; errno then says why.
  bool open();
  bool write(const char* octets, std::size_t length);
  /// Gives the file its name; a file that had it is replaced.
  bool finish();

 private:
  std::string path_;
  std::string temporaryPath_;  ///< Empty unless the temporary file exists.
  int descriptor_ = -1;
};

}  // namespace zor::receiver
