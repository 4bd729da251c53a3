#include "ZOR/discovery/RecordTable.h"

#include <algorithm>
#include <cstring>

namespace zor {
namespace {

bool same(const ZorModuleRecord& a, const ZorModuleRecord& b) {
  return std::strcmp(a.mac, b.mac) == 0 && std::strcmp(a.ip, b.ip) == 0 && std::strcmp(a.ver, b.ver) == 0 &&
         std::strcmp(a.cap, b.cap) == 0;
}

}  // namespace

bool RecordTable::contains(const ZorModuleRecord& record) const {
  return std::any_of(records_.begin(), records_.begin() + count_,
                     [&record](const ZorModuleRecord& known) { return same(known, record); });
}

void RecordTable::add(const ZorModuleRecord& record) {
  records_[next_] = record;
  next_ = (next_ + 1) % kMaxRecords;
  count_ = std::min(count_ + 1, kMaxRecords);
}

}  // namespace zor
