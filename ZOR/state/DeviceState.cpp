#include "ZOR/state/DeviceState.h"

constinit ZorDeviceState s_ZorDevice{};

namespace {

/// Both widths of `long` have a layout of their own.
constexpr bool kWideWord = sizeof(long) == 8;

static_assert(offsetof(ZorDeviceState, password) == 33);
static_assert(offsetof(ZorDeviceState, appendData) == 98);
static_assert(offsetof(ZorDeviceState, appendLen) == 116);
static_assert(offsetof(ZorDeviceState, smartStatus) == 120);
static_assert(offsetof(ZorDeviceState, smartStartMs) == (kWideWord ? 128 : 124));
static_assert(offsetof(ZorDeviceState, smartLastMs) == (kWideWord ? 136 : 128));
static_assert(offsetof(ZorDeviceState, smartTimeout) == (kWideWord ? 144 : 132));
static_assert(offsetof(ZorDeviceState, listenSocket) == (kWideWord ? 148 : 136));
static_assert(offsetof(ZorDeviceState, upgradeStartMs) == (kWideWord ? 152 : 140));
static_assert(offsetof(ZorDeviceState, upgradeStatus) == (kWideWord ? 160 : 144));
static_assert(offsetof(ZorDeviceState, upgradeIp) == (kWideWord ? 164 : 148));
static_assert(offsetof(ZorDeviceState, upgradeUrl) == (kWideWord ? 180 : 164));
static_assert(sizeof(ZorDeviceState) == (kWideWord ? 696 : 680));
static_assert(std::atomic<long>::is_always_lock_free && std::atomic<std::int32_t>::is_always_lock_free);

}  // namespace
