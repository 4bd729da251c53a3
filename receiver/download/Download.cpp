#include "receiver/download/Download.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "receiver/download/DownloadFile.h"

namespace zor::receiver {
namespace {

std::string storingFailed() {
  return "the file could not be stored: " + std::generic_category().message(errno);
}

}  // namespace

Download::Download(const std::string& url, const std::string& interface, const std::string& path)
    : fetch_(url, interface), path_(path), changed_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    set({State::Phase::failed, 0, "no thread for the download"});
  }
}

Download::~Download() {
  fetch_.cancel();
  if (thread_.joinable()) thread_.join();
  if (changed_ >= 0) close(changed_);
}

Download::State Download::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

Download::State Download::takeState() const {
  // In this order, a change after the read makes the descriptor readable again.
  eventfd_t ignored = 0;
  static_cast<void>(eventfd_read(changed_, &ignored));
  return state();
}

void Download::run() {
  std::string failure = fetch();
  if (failure.empty()) {
    set({State::Phase::done, 100, {}});
  } else {
    set({State::Phase::failed, state().percent, std::move(failure)});
  }
}

std::string Download::fetch() {
  DownloadFile file(path_);
  if (!file.open()) return storingFailed();
  std::string failure = fetch_.run(
      [&file](const char* bytes, std::size_t length) {
        return file.write(bytes, length) ? std::string{} : storingFailed();
      },
      // 100 percent is not reported before the file has its name.
      [this](int percent) {
        set({State::Phase::running, std::min(percent, 99), {}});
      });
  if (failure.empty() && !file.finish()) failure = storingFailed();
  return failure;
}

void Download::set(State state) {
  {
    const std::lock_guard lock(mutex_);
    state_ = std::move(state);
  }
  static_cast<void>(eventfd_write(changed_, 1));
}

}  // namespace zor::receiver
