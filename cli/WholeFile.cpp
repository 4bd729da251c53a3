#include "cli/WholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "cli/Escape.h"
#include "cli/ExitCode.h"

namespace zor::cli {

namespace fs = std::filesystem;

WholeFile::WholeFile(const std::string& name) : shownName_(printable(name)), target_(name) {
  std::error_code error;
  const fs::file_status status = fs::status(name, error);
  if (fs::is_directory(status)) throw RunFailure("'" + shownName_ + "' cannot be written: it is a directory");
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    descriptor_ = open(name.c_str(), O_WRONLY | O_CLOEXEC);
  } else {
    if (fs::is_regular_file(status)) target_ = fs::canonical(name, error);
    partial_ = target_ + ".part-" + std::to_string(getpid());
    descriptor_ = open(partial_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  }
  if (descriptor_ < 0) throw RunFailure(problem());
}

WholeFile::~WholeFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!partial_.empty()) unlink(partial_.c_str());
}

std::string WholeFile::problem() const {
  return "'" + shownName_ + "' cannot be written: " + std::strerror(errno);
}

std::string WholeFile::write(const std::string& content) {
  for (std::string_view left = content; !left.empty();) {
    const ssize_t count = ::write(descriptor_, left.data(), left.size());
    if (count < 0 && errno != EINTR) return problem();
    left.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
  const bool closed = close(descriptor_) == 0;
  descriptor_ = -1;
  if (!closed) return problem();
  if (partial_.empty()) return {};
  if (std::rename(partial_.c_str(), target_.c_str()) != 0) return problem();
  partial_.clear();
  return {};
}

}  // namespace zor::cli
