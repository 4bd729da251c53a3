#pragma once

#include <memory>
#include <utility>

#include "ZOR/facade/SuiteInterface.h"
#include "ZOR/platform/Mutex.h"

namespace zor {

/// The delegate of one suite, kept alive by the suite, its workers and its queued callbacks.
class DelegateSlot {
 public:
  std::shared_ptr<ZorSuiteDelegate> get() const ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return delegate_;
  }

  /// True without a delegate. The delegate is not shared for this: the worker might be the last to release
  /// it.
  bool empty() const ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return delegate_ == nullptr;
  }

  void set(std::shared_ptr<ZorSuiteDelegate> delegate) ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    delegate_.swap(delegate);
  }  // The lock goes before the parameter, so the old delegate is released without it.

 private:
  mutable Mutex mutex_;
  std::shared_ptr<ZorSuiteDelegate> delegate_ ZOR_GUARDED_BY(mutex_);
};

}  // namespace zor
