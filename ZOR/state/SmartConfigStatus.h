#pragma once

#include <cstdint>

/// \file
/// What `ZorDeviceState::smartStatus` holds once a sender could not open a socket for a frame.

inline constexpr std::int32_t kZorMulticastSyncFailed = -101;      ///< A sync frame, or no worker.
inline constexpr std::int32_t kZorMulticastDataFailed = -102;      ///< A data frame.
inline constexpr std::int32_t kZorMixedMarkerFailed = -110;        ///< A version 3 marker in a version 5 run.
inline constexpr std::int32_t kZorMixedFrameFailed = -111;         ///< A version 3 frame in a version 5 run.
inline constexpr std::int32_t kZorBroadcastSync1Failed = -201;     ///< The first sync frame, or no worker.
inline constexpr std::int32_t kZorBroadcastSync2Failed = -202;     ///< The second sync frame.
inline constexpr std::int32_t kZorBroadcastSync3Failed = -203;     ///< The third sync frame.
inline constexpr std::int32_t kZorBroadcastValueFailed = -204;     ///< A frame with the value of a byte.
inline constexpr std::int32_t kZorBroadcastPositionFailed = -205;  ///< A frame with the position of a byte.
