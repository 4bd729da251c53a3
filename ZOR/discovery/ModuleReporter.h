#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "ZOR/discovery/RecordTable.h"
#include "ZOR/facade/DelegateSlot.h"
#include "ZOR/protocol/LineReader.h"

namespace zor {

/// Receives module lines and posts each new module to the delegate: what the listener and the search
/// have in common. It belongs to one worker's run and to its thread.
class ModuleReporter {
 public:
  using Callback = void (ZorSuiteDelegate::*)(const std::string& moduleId, const std::string& MODULE_IP,
                                              const std::string& MODULE_VER, const std::string& MODULE_CAP,
                                              const std::string& MODULE_EXT);

  /// Reads lines that begin with `tag` and reports through `callback`.
  ModuleReporter(std::string_view tag, std::shared_ptr<DelegateSlot> delegateSlot, Callback callback)
      : tag_(tag), callback_(callback), delegateSlot_(std::move(delegateSlot)) {}

  /// Receives one datagram from `socket`, waiting as `ZorUdpRecvData` does, and judges it. Returns
  /// the receive's result.
  std::int32_t receive(std::int32_t socket);

  /// Judges the `length` bytes in `line()`, which arrived from `ip()`.
  void judge(std::int32_t length);

  /// Holds `kLongestLine` bytes and a NUL.
  char* line() { return line_; }
  char* ip() { return ip_; }

 private:
  void readFields();
  ZorModuleRecord record() const;
  bool post() const;

  std::string_view tag_;
  Callback callback_;
  std::shared_ptr<DelegateSlot> delegateSlot_;
  RecordTable reported_;
  LineReader reader_;
  char line_[kLongestLine + 1];

  // What the lines have told so far: a line that lacks a key leaves the previous line's value.
  char mac_[20] = {};
  char ip_[20] = {};
  char ver_[20] = {};
  char cap_[40] = {};
  char ext_[400] = {};
};

}  // namespace zor
