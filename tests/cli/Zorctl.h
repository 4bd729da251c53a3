#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Wait.h"

using Arguments = std::vector<std::string>;

inline constexpr std::uint16_t kDefaultPort = 25010;

inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// True for one line of diagnosis.
inline bool isOneLine(const std::string& text) {
  return text.starts_with("zorctl: ") && text.find('\n') == text.size() - 1;
}

/// A running zorctl, its stdout and stderr in files.
class Zorctl {
 public:
  explicit Zorctl(Arguments arguments, int standardOutput = -1) : out_(std::tmpfile()), err_(std::tmpfile()) {
    arguments.insert(arguments.begin(), ZORCTL);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    process_ = fork();
    if (process_ != 0) return;
    dup2(standardOutput >= 0 ? standardOutput : fileno(out_), STDOUT_FILENO);
    dup2(fileno(err_), STDERR_FILENO);
    freopen("/dev/null", "r", stdin);
    signal(SIGINT, SIG_DFL);  // A background job inherits it ignored.
    execv(ZORCTL, argv.data());
    _exit(127);
  }
  ~Zorctl() {
    if (process_ > 0) kill(process_, SIGKILL);
    if (process_ > 0) waitpid(process_, nullptr, 0);
    std::fclose(out_);
    std::fclose(err_);
  }
  Zorctl(const Zorctl&) = delete;
  Zorctl& operator=(const Zorctl&) = delete;

  void interrupt(int signalNumber = SIGINT) { kill(process_, signalNumber); }

  /// The exit code, or 128 plus the number of the signal that ended it. It is killed when it does not end in
  /// time, so that the test says which expectation failed.
  int wait() {
    int status = 0;
    if (!waitUntil([&] { return waitpid(process_, &status, WNOHANG) == process_; }, 30000)) {
      interrupt(SIGKILL);
      waitpid(process_, &status, 0);
    }
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

  /// Calls `meanwhile` repeatedly until stdout holds `text`, for at most 20 s. Returns whether it does.
  bool prints(
      const std::string& text, const std::function<void()>& meanwhile = [] {}) {
    const auto isPrinted = [&] {
      if (contains(out(), text)) return true;
      meanwhile();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      return false;
    };
    return waitUntil(isPrinted, 20000);
  }

  std::string out() const { return contents(out_); }
  std::string err() const { return contents(err_); }

  /// The first event of that name in the JSON lines, or null. A line that is not JSON throws.
  nlohmann::json event(const std::string& name) const {
    std::istringstream lines(out());
    for (std::string line; std::getline(lines, line);) {
      if (const nlohmann::json event = nlohmann::json::parse(line); event.at("event") == name) return event;
    }
    return {};
  }

 private:
  static std::string contents(std::FILE* file) {
    std::string text(1 << 16, '\0');
    const ssize_t count = pread(fileno(file), text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return text;
  }

  std::FILE* out_;
  std::FILE* err_;
  pid_t process_;
};
