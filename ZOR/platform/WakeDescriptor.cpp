#include "ZOR/platform/WakeDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace zor {
namespace {

void makeQuiet(int descriptor) {
  fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  fcntl(descriptor, F_SETFL, O_NONBLOCK);
}

}  // namespace

bool WakeDescriptor::open() {
  int ends[2];
  if (pipe(ends) != 0) return false;
  makeQuiet(ends[0]);
  makeQuiet(ends[1]);
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
