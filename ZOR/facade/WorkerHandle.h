#pragma once

#include <memory>

#include "ZOR/platform/Export.h"
#include "ZOR/platform/Mutex.h"

class ZorTunable;

namespace zor {
class Worker;
}

/// Tells if a worker of one kind runs, and reaches it. Empty when none does.
///
/// A worker empties its handle when its socket is closed and its result stands.
/// Every operation may be called from any thread.
class ZOR_API ZorWorkerHandle {
 public:
  constexpr ZorWorkerHandle() = default;
  ZorWorkerHandle(const ZorWorkerHandle&) = delete;
  ZorWorkerHandle& operator=(const ZorWorkerHandle&) = delete;

  /// True while a worker of this kind runs.
  explicit operator bool() const ZOR_EXCLUDES(mutex_);

  /// Asks the worker, if there is one, to end. Does not wait for it.
  void cancel() ZOR_EXCLUDES(mutex_);

  /// Waits, without limit, until no worker of this kind runs.
  void waitUntilEmpty() ZOR_EXCLUDES(mutex_);

 private:
  friend class zor::Worker;
  friend class ZorTunable;

  /// Makes a waiting worker read its interval again.
  void wake() ZOR_EXCLUDES(mutex_);

  /// Stores the worker that is about to start.
  void set(std::shared_ptr<zor::Worker> worker) ZOR_EXCLUDES(mutex_);

  /// Empties the handle and lets go whoever waits for that.
  void clear() ZOR_EXCLUDES(mutex_);

  std::shared_ptr<zor::Worker> worker() const ZOR_EXCLUDES(mutex_);

  mutable zor::Mutex mutex_;
  std::shared_ptr<zor::Worker> worker_ ZOR_GUARDED_BY(mutex_);
};

ZOR_API extern ZorWorkerHandle& s_threadSmartConfigBc;      ///< Version 5 broadcast sender.
ZOR_API extern ZorWorkerHandle& s_threadSmartConfigMc;      ///< Version 5 multicast or version 3 sender.
ZOR_API extern ZorWorkerHandle& s_threadSmartOnlineListen;  ///< Listener for announcements.
ZOR_API extern ZorWorkerHandle& s_threadDeviceSearch;       ///< Search for modules.
ZOR_API extern ZorWorkerHandle& s_threadUpgrade;            ///< Firmware upgrade.
