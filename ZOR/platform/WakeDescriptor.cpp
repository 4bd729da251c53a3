#include "ZOR/platform/WakeDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#if defined(__linux__)
#include <sys/eventfd.h>
#endif

#include "ZOR/platform/CancelLater.h"

namespace zor {
namespace {

/// Opens two ends that are closed on exec and never block. Both are one descriptor on Linux.
bool openQuietEnds(std::int32_t (&ends)[2]) {
#if defined(__linux__)
  ends[0] = ends[1] = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  return ends[0] >= 0;
#else
  if (pipe(ends) != 0) return false;
  for (const std::int32_t end : ends) {
    fcntl(end, F_SETFD, FD_CLOEXEC);
    fcntl(end, F_SETFL, O_NONBLOCK);
  }
  return true;
#endif
}

}  // namespace

std::int32_t WakeDescriptor::descriptor() {
  std::int32_t ends[2];
  if (readEnd_ < 0 && openQuietEnds(ends)) {
    readEnd_ = ends[0];
    writeEnd_ = ends[1];
  }
  return readEnd_;
}

void WakeDescriptor::raise() {
  if (writeEnd_ < 0 || raised_) return;
  const CancelLater later;
  const std::uint64_t mark = 1;  // An eventfd takes eight bytes.
  raised_ = write(writeEnd_, &mark, sizeof mark) == sizeof mark;
}

void WakeDescriptor::lower() {
  if (!raised_) return;
  const CancelLater later;
  std::uint64_t mark;
  if (read(readEnd_, &mark, sizeof mark) == sizeof mark) raised_ = false;
}

void WakeDescriptor::close() {
  if (readEnd_ < 0) return;
  const CancelLater later;
  ::close(readEnd_);
  if (writeEnd_ != readEnd_) ::close(writeEnd_);
  readEnd_ = writeEnd_ = -1;
  raised_ = false;
}

}  // namespace zor
