#include "ZOR/state/Tunables.h"

#include "ZOR/platform/WorkerThread.h"

constinit ZorTunable s_ZorSmart5_McLen{30};
constinit ZorTunable s_ZorSmart5_McCharInterval{30};
constinit ZorTunable s_ZorSmart5_McLoopInterval{100};
constinit ZorTunable s_ZorSmart5_McBlockInterval{0};
constinit ZorTunable s_ZorSmart5_McTagRepeat{1};
constinit ZorTunable s_ZorSmart5_McDataRepeat{1};
constinit ZorTunable s_ZorSmart5_McLoopRepeat{5};
constinit ZorTunable s_ZorSmart5_BcLen{30};
constinit ZorTunable s_ZorSmart5_BcCharInterval{15};
constinit ZorTunable s_ZorSmart5_BcLoopInterval{100};
constinit ZorTunable s_ZorSmart5_BcBlockInterval{0};
constinit ZorTunable s_ZorSmart5_BcTagRepeat{1};
constinit ZorTunable s_ZorSmart5_BcDataRepeat{1};
constinit ZorTunable s_ZorSmart5_BcLoopRepeat{5};
constinit std::atomic<std::uint8_t> s_ZorSmart5_MixV3{0};
constinit ZorTunable s_ZorSearchMax{20};
constinit ZorTunable s_ZorSearchInterval{100};

ZorTunable& ZorTunable::operator=(std::int32_t value) {
  if (value_.exchange(value) != value) zor::WorkerThread::wakeAll();
  return *this;
}
