#include "cli/MainQueue.h"

#include <poll.h>

#include "ZOR/ZorSuite.h"

namespace zor::cli {

std::chrono::steady_clock::duration runMainQueueFor(int waitMs, const Interrupt& interrupt) {
  const auto start = std::chrono::steady_clock::now();
  pollfd wanted[] = {{ZorMainQueueDescriptor(), POLLIN, 0}, {interrupt.descriptor(), POLLIN, 0}};
  poll(wanted, 2, waitMs);
  const auto waited = std::chrono::steady_clock::now() - start;
  ZorRunMainQueue(0);
  return waited;
}

}  // namespace zor::cli
