#include "cli/TextWriter.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <mutex>

#include "cli/Interrupt.h"

namespace zor::cli {
namespace {

constexpr int kLastWaitMs = 500;  ///< How long a slow reader may take after an interrupt.

/// Waits until `descriptor` takes more or has failed. False when an interrupt came and it still takes no
/// more.
bool waitForRoom(int descriptor, const Interrupt& interrupt) {
  pollfd wanted[] = {{descriptor, POLLOUT, 0}, {interrupt.descriptor(), POLLIN, 0}};
  while (poll(wanted, 2, -1) < 0) continue;
  return wanted[0].revents != 0 || poll(wanted, 1, kLastWaitMs) > 0;
}

/// Writes what `descriptor` takes without blocking: a pipe that has room takes PIPE_BUF bytes. Returns the
/// number of bytes, or -1 with errno set.
ssize_t writeSome(int descriptor, std::string_view text) {
  static std::mutex mutex;  // Another thread must not take the room that was seen.
  const std::lock_guard lock(mutex);
  pollfd wanted{descriptor, POLLOUT, 0};
  if (poll(&wanted, 1, 0) <= 0) return 0;
  return write(descriptor, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
}

}  // namespace

int writeText(int descriptor, std::string_view text, const Interrupt& interrupt) {
  while (!text.empty()) {
    if (!waitForRoom(descriptor, interrupt)) return ETIMEDOUT;
    const ssize_t count = writeSome(descriptor, text);
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR && errno != EAGAIN) {
      return errno;
    }
  }
  return 0;
}

bool writeAtOnce(int descriptor, std::string_view text) {
  return writeSome(descriptor, text) == static_cast<ssize_t>(text.size());
}

}  // namespace zor::cli
