#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace zor::receiver {

/// A file that appears under its name only when it is complete. Until then it grows under a temporary name in
/// the same folder, readable only by its owner, and is removed with this object unless finish() was called.
/// Not thread-safe; calls block on the disk.
class DownloadFile {
 public:
  /// The file will appear at `path`. If that is empty, all bytes are dropped and no file is made.
  explicit DownloadFile(std::string path) : path_(std::move(path)) {}
  ~DownloadFile();
  DownloadFile(const DownloadFile&) = delete;
  DownloadFile& operator=(const DownloadFile&) = delete;

  /// Each of these returns false when the system failed; errno then says why.
  bool open();
  bool write(const char* bytes, std::size_t length);
  /// Gives the file its name; replaces a file that had it.
  bool finish();

 private:
  std::string path_;
  std::string temporaryPath_;  ///< Empty unless the temporary file exists.
  int descriptor_ = -1;
};

}  // namespace zor::receiver
