#include "ZOR/facade/Tunables.h"

#include <cstddef>
#include <iterator>

#include "ZOR/facade/SuiteInterface.h"
#include "ZOR/facade/WorkerHandle.h"

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
  if (value_.exchange(value) == value) return *this;
  // The senders are the workers that wait on tunables.
  s_threadSmartConfigBc.wake();
  s_threadSmartConfigMc.wake();
  return *this;
}

void ZorSuite::SmartConfigV5_SetProperty(const std::uint8_t* bytes, std::size_t length) {
  ZorTunable* const tunables[] = {
      &s_ZorSmart5_McLen,           &s_ZorSmart5_McCharInterval,  &s_ZorSmart5_McLoopInterval,
      &s_ZorSmart5_McBlockInterval, &s_ZorSmart5_McTagRepeat,     &s_ZorSmart5_McDataRepeat,
      &s_ZorSmart5_McLoopRepeat,    &s_ZorSmart5_BcLen,           &s_ZorSmart5_BcCharInterval,
      &s_ZorSmart5_BcLoopInterval,  &s_ZorSmart5_BcBlockInterval, &s_ZorSmart5_BcTagRepeat,
      &s_ZorSmart5_BcDataRepeat,    &s_ZorSmart5_BcLoopRepeat,
  };
  if (bytes == nullptr || length < std::size(tunables)) return;
  for (ZorTunable* const tunable : tunables) *tunable = *bytes++;
}

void ZorSuite::SmartConfigV5_MixV3Enable(std::uint8_t flag) {
  s_ZorSmart5_MixV3 = flag;
}
