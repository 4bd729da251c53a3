#include "receiver/download/DownloadFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace zor::receiver {

DownloadFile::~DownloadFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!temporaryPath_.empty()) unlink(temporaryPath_.c_str());
}

bool DownloadFile::open() {
  if (path_.empty()) return true;
  std::string name = path_ + ".XXXXXX";
  descriptor_ = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor_ < 0) return false;
  temporaryPath_ = name;
  return true;
}

bool DownloadFile::write(const char* bytes, std::size_t length) {
  if (path_.empty()) return true;
  while (length > 0) {
    const ssize_t written = ::write(descriptor_, bytes, length);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes += written;
    length -= static_cast<std::size_t>(written);
  }
  return true;
}

bool DownloadFile::finish() {
  if (path_.empty()) return true;
  const int closing = descriptor_;
  descriptor_ = -1;
  // Some file systems report a full disk only here.
  if (close(closing) != 0) return false;
  if (std::rename(temporaryPath_.c_str(), path_.c_str()) != 0) return false;
  temporaryPath_.clear();
  return true;
}

}  // namespace zor::receiver
