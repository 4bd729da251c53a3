#include "cli/MainQueue.h"

#include <poll.h>

#include "ZOR/ZorSuite.h"

namespace zor::cli {

void runMainQueueFor(int waitMs, const Interrupt& interrupt) {
  pollfd wanted[] = {{ZorMainQueueDescriptor(), POLLIN, 0}, {interrupt.descriptor(), POLLIN, 0}};
  poll(wanted, 2, waitMs);
  ZorRunMainQueue(0);
}

}  // namespace zor::cli
