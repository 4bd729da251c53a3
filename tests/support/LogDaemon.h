#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

/// The system's log daemon for this process, which reads when it is asked to. It needs the rights that a
/// process has in scripts/in-namespace. One at a time.
class LogDaemon {
 public:
  /// `type` is that of its socket. From now on the process has a /dev of its own with nothing but the daemon
  /// in it.
  explicit LogDaemon(int type) : descriptor_(socket(AF_UNIX, type | SOCK_CLOEXEC, 0)) {
    const bool alone = unshare(CLONE_NEWNS) == 0 &&
                       mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                       mount("none", "/dev", "tmpfs", 0, nullptr) == 0;
    const bool bound = alone && bind(descriptor_, address(), sizeof address_) == 0;
    if (!bound || (type == SOCK_STREAM && listen(descriptor_, 1) != 0)) {
      throw std::runtime_error("cannot become the log daemon");
    }
  }
  ~LogDaemon() { close(descriptor_); }
  LogDaemon(const LogDaemon&) = delete;
  LogDaemon& operator=(const LogDaemon&) = delete;

  /// The next line, or "" when none waits.
  std::string read() const {
    char buffer[2048];
    const ssize_t count = recv(descriptor_, buffer, sizeof buffer, MSG_DONTWAIT);
    return std::string(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
  }

  /// Sends lines to the daemon until it has room for no more.
  void fill() const {
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    while (sendto(sender, "full", 4, MSG_DONTWAIT, address(), sizeof address_) == 4) {
    }
    close(sender);
  }

 private:
  const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&address_); }

  sockaddr_un address_{AF_UNIX, "/dev/log"};
  int descriptor_;
};
