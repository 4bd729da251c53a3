#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ZOR/platform/Export.h"
#include "ZOR/state/Reports.h"

namespace zor {
class DelegateSlot;
}  // namespace zor

/// Hears of modules. Both operations are called on the main-thread queue, one call at a time.
///
/// The texts come from a module's line: bytes as they were sent, NUL-free and bounded, but otherwise
/// untrusted.
///
/// - `moduleId`, at most 19 bytes: the value of the line's `mac` pair.
/// - `MODULE_IP`: the dotted-quad address that the line came from.
/// - `MODULE_VER`, at most 19 bytes: the value of the `ver` pair, the version of the firmware.
/// - `MODULE_CAP`, at most 39 bytes: the value of the `cap` pair, the module's text about its capabilities.
/// - `MODULE_EXT`, at most 399 bytes: the rest of the line after the `cap` pair, verbatim, such as "x=9,y=8".
///
/// A pair that a line lacks keeps its value from the line that the same worker read before.
///
/// A worker reports a module again when its `mac`, address, `ver` or `cap` differs from every report that it
/// remembers, not when only the extension differs. It remembers its latest 100 reports; a new listener or
/// search remembers none, so it reports every module again. A module that speaks while there is no delegate
/// counts as reported; one whose report found the main-thread queue full does not.
class ZOR_API ZorSuiteDelegate {
 public:
  virtual ~ZorSuiteDelegate();  ///< May run on a worker's thread, if the worker is the last to hold it.

  /// A module answered a search.
  virtual void onSearchFound(const std::string& moduleId, const std::string& MODULE_IP,
                             const std::string& MODULE_VER, const std::string& MODULE_CAP,
                             const std::string& MODULE_EXT) = 0;

  /// A module announced that it has joined the network. An announcement does not prove that the present run
  /// was heard: a module may repeat the announcement of an earlier run, and any host can send one.
  virtual void onSmartFound(const std::string& moduleId, const std::string& MODULE_IP,
                            const std::string& MODULE_VER, const std::string& MODULE_CAP,
                            const std::string& MODULE_EXT) = 0;
};

/// The library's one entry point: starts, steers and stops its workers.
///
/// 1. All state but the delegate is process-wide: two suites drive the same workers, and a start
///    through either replaces the worker of the same kind that the other started.
/// 2. Call the operations from one thread, the application's. `SmartConfigV5_SetProperty`,
///    `SmartConfigV5_MixV3Enable`, `DeviceSearchSetProperty`, `SmartConfigStop`, the progress and
///    report operations and the delegate's accessors may be called from any thread.
/// 3. A start first ends the worker of its kind and waits for it, without limit: a few milliseconds,
///    or the whole rest of an upgrade. Nothing else blocks.
/// 4. A suite may be destroyed while its workers run. They run on as they would, and still report
///    to the delegate that it had, which may then be destroyed on a worker's thread.
/// 5. No operation throws. Texts are bytes, cut at their field's length and at the first NUL.
class ZOR_API ZorSuite {
 public:
  ZorSuite();   ///< Has no delegate yet, and when memory is short never takes one. Any thread.
  ~ZorSuite();  ///< Ends no worker. Any thread.
  ZorSuite(const ZorSuite&) = delete;
  ZorSuite& operator=(const ZorSuite&) = delete;

  /// The delegate, or null. Any thread.
  std::shared_ptr<ZorSuiteDelegate> delegate() const;

  /// Replaces the delegate; callbacks that are still queued go to the new one. Any thread.
  void setDelegate(std::shared_ptr<ZorSuiteDelegate> delegate);

  /// The library's version, "3.5.1"; also stored in `libVer`.
  std::string GetLibraryVersion();

  /// Starts a search for the modules on the network, each reported once through `onSearchFound`. A
  /// running search is replaced. The search ends right after its last request.
  void DeviceSearch();

  /// Sets `s_ZorSearchInterval` (milliseconds between requests) and `s_ZorSearchMax` (number of
  /// requests), for a running search too. Any value is taken.
  void DeviceSearchSetProperty(std::int32_t interval, std::int32_t COUNT);

  /// Tells the module at dotted-quad `IP` (at most 15 bytes) to fetch the firmware at `URL` (at most
  /// 512 bytes, "http://host[:port]/path") and follows its progress. Waits, without limit, for a
  /// running upgrade to end by itself. A worker that cannot be created leaves -121 in the status.
  void DeviceUpgrade(std::string_view IP, std::string_view URL);

  /// 0 requested, 1 command sent, 2..99 per cent, 100 or more done; negative for a failure: -100
  /// silence for 10 s, -111 or -112 URL refused, -121 or -122 no socket, else the module's `ret`.
  std::int32_t DeviceUpgradeProgress();

  /// What the latest search has done. Any thread; never blocks.
  ZorSearchReport DeviceSearchReport();

  /// What the latest upgrade has done. Any thread; never blocks.
  ZorUpgradeReport DeviceUpgradeReport();

  /// Listens for announcements on UDP `port`; outside 1..65534 it takes the first free port from
  /// 25010 up. A running listener is replaced. Returns the port bound, or -1, with no listener, when
  /// the port is taken, no socket can be made or no worker can be created. A module announces itself on
  /// another port than 25010 only when the run names it: see `SmartConfigV5_Append`.
  std::int32_t SmartConfigOnlineListen(std::int32_t port);

  /// Asks the smart configuration senders and the listener to end. Does not wait for them.
  void SmartConfigStop();

  /// The share of the time-out, 0..100, that had passed when the latest multicast datagram went
  /// out; 100 for a time-out of 0 or less; negative for a sender that could not open a socket (the
  /// codes of SmartConfigStatus.h). It counts by the wall clock in 32 bits: a step of that clock, or a
  /// run of more than 21,474 seconds, can make it any number; `s_ZorDevice.smartStatus` then says whether a
  /// sender failed.
  std::int32_t SmartConfigProgress();

  /// What the latest smart configuration run and the latest listener have done: whether frames left, what
  /// failed and why, what was heard and refused. Any thread; never blocks.
  ZorRunReport SmartConfigReport();

  /// Starts a version 5 run of `TIMEOUT` milliseconds: both senders, less those whose length base
  /// is 0. `SSID` is cut at 32 bytes, `PASSWORD` at 64. A worker that cannot be created leaves -101
  /// (multicast) or -201 (broadcast) in the status.
  ///
  /// Opens no listener. When the multicast sender ends by the time-out, the run's listener ends too: the one
  /// that ran at the start or, if none did, the first that was opened while the run had time left. A listener
  /// that was opened in its place is not ended: it belongs to the next run.
  void SmartConfigV5_Start(std::string_view SSID, std::string_view PASSWORD, std::int32_t TIMEOUT);

  /// Sets the application data of later version 5 runs: `length` bytes, of which 16 are kept, or
  /// none when `bytes` is null. Call it before the start. To have modules announce themselves on another port
  /// than 25010, pass what `ZorMakePortRecord` (AnnouncementPort.h) makes of it.
  void SmartConfigV5_Append(const std::uint8_t* bytes, std::size_t length);

  /// Sets the fourteen pacing tunables (Tunables.h) from as many bytes. A shorter buffer changes
  /// nothing; further bytes are ignored. Takes effect in a running sender.
  void SmartConfigV5_SetProperty(const std::uint8_t* bytes, std::size_t length);

  /// 1 mixes version 3 frames into later version 5 runs; any other value does not.
  void SmartConfigV5_MixV3Enable(std::uint8_t flag);

  /// Starts a listener on port 25010, which ends with the run's time-out, and a version 3 run of `TIMEOUT`
  /// milliseconds in place of the multicast sender that runs. When the port is taken it logs "listen smart3
  /// failed" and changes nothing. A worker that cannot be created leaves -101 in the status.
  void SmartConfigV3_Start(std::string_view SSID, std::string_view PASSWORD, std::int32_t TIMEOUT);

  // Worker entries. The starts run the workers on threads of their own; a call of an entry returns at once
  // and does nothing. Any thread.
  void threadDeviceSearch();       ///< Entry of the search; a call does nothing.
  void threadSmartOnlineListen();  ///< Entry of the listener; a call does nothing.
  void threadSmartConfigV3();      ///< Entry of the version 3 sender; a call does nothing.
  void threadSmartConfigV5_mc();   ///< Entry of the version 5 multicast sender; a call does nothing.
  void threadSmartConfigV5_bc();   ///< Entry of the version 5 broadcast sender; a call does nothing.
  void threadUpgrade();            ///< Entry of the upgrade; a call does nothing.

 private:
  std::shared_ptr<zor::DelegateSlot> delegateSlot_;  ///< Shared with the workers that report to the delegate.
};

/// The version string that `GetLibraryVersion` made last. Application's thread.
ZOR_API extern std::string libVer;
