#include <algorithm>
#include <iterator>

#include "bindings/c/Support.h"

namespace {

/// In the order of the `ZOR_TUNABLE_` numbers, which begins with that of the paces.
ZorTunable* const kTunables[] = {
    &s_ZorSmart5_McLen,           &s_ZorSmart5_McCharInterval,  &s_ZorSmart5_McLoopInterval,
    &s_ZorSmart5_McBlockInterval, &s_ZorSmart5_McTagRepeat,     &s_ZorSmart5_McDataRepeat,
    &s_ZorSmart5_McLoopRepeat,    &s_ZorSmart5_BcLen,           &s_ZorSmart5_BcCharInterval,
    &s_ZorSmart5_BcLoopInterval,  &s_ZorSmart5_BcBlockInterval, &s_ZorSmart5_BcTagRepeat,
    &s_ZorSmart5_BcDataRepeat,    &s_ZorSmart5_BcLoopRepeat,    &s_ZorSearchMax,
    &s_ZorSearchInterval,
};
static_assert(std::size(kTunables) == ZOR_TUNABLE_SEARCH_INTERVAL + 1);

bool isTunable(std::int32_t tunable) {
  return tunable >= 0 && static_cast<std::size_t>(tunable) < std::size(kTunables);
}

}  // namespace

std::int32_t zor_get_tunable(std::int32_t tunable, std::int32_t* value) {
  if (value == nullptr) return ZOR_ERROR_NULL;
  if (!isTunable(tunable)) return ZOR_ERROR_ARGUMENT;
  *value = *kTunables[tunable];
  return ZOR_OK;
}

std::int32_t zor_set_tunable(std::int32_t tunable, std::int32_t value) {
  if (!isTunable(tunable)) return ZOR_ERROR_ARGUMENT;
  *kTunables[tunable] = value;
  return ZOR_OK;
}

std::int32_t zor_find_pace(const char* name, std::size_t length, std::uint8_t values[14]) {
  if (!zor::c::isGiven(name, length) || values == nullptr) return ZOR_ERROR_NULL;
  const ZorPace* const pace = ZorFindPace(zor::c::viewOf(name, length));
  if (pace == nullptr) return ZOR_ERROR_ARGUMENT;
  std::copy(pace->values.begin(), pace->values.end(), values);
  return ZOR_OK;
}

std::int32_t zor_pace_name(std::int32_t index, zor_text* name) {
  if (name == nullptr) return ZOR_ERROR_NULL;
  if (index < 0 || static_cast<std::size_t>(index) >= std::size(kZorPaces)) return ZOR_ERROR_ARGUMENT;
  *name = zor::c::textOf(kZorPaces[index].name);
  return ZOR_OK;
}
