#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "ZOR/discovery/RecordTable.h"
#include "ZOR/facade/DelegateSlot.h"
#include "ZOR/net/Receive.h"
#include "ZOR/protocol/LineReader.h"
#include "ZOR/state/Counters.h"

namespace zor {

/// Receives module lines and posts each new module to the delegate: what the listener and the search
/// have in common. It belongs to one worker's run and to its thread.
class ModuleReporter {
 public:
  using Callback = void (ZorSuiteDelegate::*)(const std::string& moduleId, const std::string& MODULE_IP,
                                              const std::string& MODULE_VER, const std::string& MODULE_CAP,
                                              const std::string& MODULE_EXT);

  /// Reads lines that start with `tag`, reports through `callback` and counts in `counters`, which outlives
  /// this.
  ModuleReporter(std::string_view tag, std::shared_ptr<DelegateSlot> delegateSlot, Callback callback,
                 LineCounters& counters)
      : tag_(tag), callback_(callback), delegateSlot_(std::move(delegateSlot)), counters_(counters) {}

  /// Receives one datagram from `socket`, without waiting, and takes it. Returns what the receive found.
  Received receive(std::int32_t socket);

  /// Takes the `length` bytes at `line`, at most `kMaxLineLength` and a NUL after them, which arrived from
  /// dotted-quad `address`. They are trimmed in place.
  void take(char* line, std::int32_t length, const char* address);

 private:
  void readFields();
  void report();
  bool post() const;

  std::string_view tag_;
  Callback callback_;
  std::shared_ptr<DelegateSlot> delegateSlot_;
  LineCounters& counters_;
  RecordTable reported_;
  LineReader reader_;

  // What the lines have said so far: a line that lacks a key leaves the previous line's value.
  ZorModuleRecord current_{};
  char ext_[400] = {};
};

}  // namespace zor
