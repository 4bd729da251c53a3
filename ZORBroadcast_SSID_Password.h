#pragma once

#include <memory>
#include <string_view>

#include "ZOR/ZorSuite.h"

/// Provisions a module with one call: listens for its announcement and runs version 5 smart
/// configuration for 100 seconds. Call it from the application's thread.
class ZOR_API ZORBroadcast_SSID_Password {
 public:
  ZORBroadcast_SSID_Password();           ///< Starts nothing.
  virtual ~ZORBroadcast_SSID_Password();  ///< Ends nothing: a run continues.
  ZORBroadcast_SSID_Password(const ZORBroadcast_SSID_Password&) = delete;
  ZORBroadcast_SSID_Password& operator=(const ZORBroadcast_SSID_Password&) = delete;

  /// Starts a run on a new suite, in place of the one before. If port 25010 is taken, the next free
  /// port is used and named to the module in three bytes of application data; when no port is free,
  /// the run starts all the same and nothing listens. To hear of the module, set a delegate on
  /// `myZorSuite` after this call. Blocks as the suite's starts do.
  void startBroadcast_SSID(std::string_view SSID, std::string_view Password);

  /// Stops the run and the listener, without waiting; logs "SmartConfig v5 stop...".
  void stopBroadcast();

  /// Makes a line of the time of day and `text`, on the main-thread queue, and drops it. An
  /// application that wants to see the lines of a start overrides this.
  virtual void LogStr(std::string_view text);

  /// Returns the suite of the latest start, or what was set since, or null.
  std::shared_ptr<ZorSuite> myZorSuite() const;

  /// Replaces the suite that `stopBroadcast` stops; null for none. The next start replaces it again.
  void setMyZorSuite(std::shared_ptr<ZorSuite> suite);

 private:
  std::shared_ptr<ZorSuite> _myZorSuite;  ///< Null before the first start.
};
