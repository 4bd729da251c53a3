#pragma once

#include <functional>

namespace zor::objc {

/// Has the main run loop run `closure` in one of its next passes, in its common modes. Any thread. An
/// exception that the closure throws goes on to the run loop.
void postToMainRunLoop(std::function<void()> closure);

}  // namespace zor::objc
