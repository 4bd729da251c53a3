#pragma once

#include <array>
#include <cstddef>

#include "ZOR/discovery/ModuleRecord.h"

namespace zor {

/// The modules that one worker has reported. It holds 100; the next one takes the oldest's place, so
/// every module is reported at least once and the memory stays what it is.
class RecordTable {
 public:
  static constexpr std::size_t kMaxRecords = 100;

  bool contains(const ZorModuleRecord& record) const;
  void add(const ZorModuleRecord& record);

 private:
  std::array<ZorModuleRecord, kMaxRecords> records_;
  std::size_t count_ = 0;
  std::size_t next_ = 0;  ///< Where the next record goes.
};

}  // namespace zor
