#pragma once

#include <cstdint>

namespace zor {

/// A descriptor that polls readable while it is raised. Not thread-safe; its owner locks.
/// An open one is closed only by `close`: event loops may hold it until the process ends.
class WakeDescriptor {
 public:
  /// The readable end, opened at the first call that succeeds, or -1.
  std::int32_t descriptor();

  /// Makes the descriptor readable. Does nothing before it was opened or when it is raised already.
  void raise();

  /// Makes it unreadable again.
  void lower();

  /// Closes the descriptor, which a later call of `descriptor` opens anew.
  void close();

 private:
  std::int32_t readEnd_ = -1;
  std::int32_t writeEnd_ = -1;  ///< The same as `readEnd_` where the system has such descriptors.
  bool raised_ = false;
};

}  // namespace zor
