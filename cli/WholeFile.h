#pragma once

#include <string>

namespace zor::cli {

/// A file that a command writes at its end: whole or, when anything fails, not at all, and then a file of
/// that name is as it was before. What is no regular file, such as a pipe, is written as it is.
class WholeFile {
 public:
  /// Makes sure that a file of this name can be written. Throws `RunFailure` when it cannot.
  explicit WholeFile(const std::string& name);
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// Writes the file, once. Returns nothing, or in one line why it failed.
  std::string write(const std::string& content);

 private:
  std::string problem() const;

  std::string shownName_;
  std::string target_;
  std::string partial_;  ///< What is written before it gets its name; empty when there is none.
  int descriptor_ = -1;
};

}  // namespace zor::cli
