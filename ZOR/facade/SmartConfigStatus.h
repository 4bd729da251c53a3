#pragma once

#include <cstdint>

// What `ZorDeviceState::smartStatus` holds once a sender could not open a socket for a frame.

inline constexpr std::int32_t kZorMulticastSyncFailed = -101;
inline constexpr std::int32_t kZorMulticastDataFailed = -102;
inline constexpr std::int32_t kZorMixedMarkerFailed = -110;  ///< A version 3 marker in a version 5 run.
inline constexpr std::int32_t kZorMixedFrameFailed = -111;   ///< A version 3 frame in a version 5 run.
inline constexpr std::int32_t kZorBroadcastSync1Failed = -201;
inline constexpr std::int32_t kZorBroadcastSync2Failed = -202;
inline constexpr std::int32_t kZorBroadcastSync3Failed = -203;
inline constexpr std::int32_t kZorBroadcastValueFailed = -204;
inline constexpr std::int32_t kZorBroadcastPositionFailed = -205;
