#pragma once

#include "ZOR/platform/Export.h"

/// Says whether a worker of one kind runs, and reaches it. Empty when none does.
///
/// A worker empties its handle once its socket is closed and its result stands.
/// Every operation may be called from any thread.
class ZOR_API ZorWorkerHandle {
 public:
  ZorWorkerHandle(const ZorWorkerHandle&) = delete;
  ZorWorkerHandle& operator=(const ZorWorkerHandle&) = delete;

  /// True while a worker of this kind runs.
  explicit operator bool() const;

  /// Asks the worker, if there is one, to end. Does not wait for it.
  void cancel();

  /// Waits, without limit, until no worker of this kind runs.
  void waitUntilEmpty();

 protected:
  constexpr ZorWorkerHandle() = default;  // The five below are all there are.
  ~ZorWorkerHandle() = default;
};

ZOR_API extern ZorWorkerHandle& s_threadSmartConfigBc;      ///< Version 5 broadcast sender.
ZOR_API extern ZorWorkerHandle& s_threadSmartConfigMc;      ///< Version 5 multicast or version 3 sender.
ZOR_API extern ZorWorkerHandle& s_threadSmartOnlineListen;  ///< Listener for announcements.
ZOR_API extern ZorWorkerHandle& s_threadDeviceSearch;       ///< Search for modules.
ZOR_API extern ZorWorkerHandle& s_threadUpgrade;            ///< Firmware upgrade.
