#include "ZOR/platform/WakeDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace zor {
namespace {

/// Opens a pipe that is closed on exec and never blocks.
bool openQuietPipe(int (&ends)[2]) {
#if defined(__linux__)
  return pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0;
#else
  if (pipe(ends) != 0) return false;
  for (const int end : ends) {
    fcntl(end, F_SETFD, FD_CLOEXEC);
    fcntl(end, F_SETFL, O_NONBLOCK);
  }
  return true;
#endif
}

}  // namespace

bool WakeDescriptor::open() {
  int ends[2];
  if (!openQuietPipe(ends)) return false;
  readEnd_ = ends[0];
  writeEnd_ = ends[1];
  return true;
}

std::int32_t WakeDescriptor::descriptor() {
  if (readEnd_ < 0) open();
  return readEnd_;
}

void WakeDescriptor::raise() {
  if (writeEnd_ < 0 || raised_) return;
  const char mark = 1;
  raised_ = write(writeEnd_, &mark, 1) == 1;
}

void WakeDescriptor::lower() {
  if (!raised_) return;
  char mark;
  if (read(readEnd_, &mark, 1) == 1) raised_ = false;
}

}  // namespace zor
