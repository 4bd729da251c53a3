#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "ZOR/platform/Export.h"

inline constexpr std::size_t kZorSsidSize = 33;         ///< An SSID of 32 bytes (IEEE 802.11) and its NUL.
inline constexpr std::size_t kZorPasswordSize = 65;     ///< A pass phrase of 64 bytes and its NUL.
inline constexpr std::size_t kZorAppendSize = 17;       ///< 16 application bytes and a spare one.
inline constexpr std::size_t kZorIpSize = 16;           ///< A dotted-quad address and its NUL.
inline constexpr std::size_t kZorUpgradeUrlSize = 513;  ///< A URL of 512 bytes and its NUL.

/// Process-wide state of the suite: the inputs of the latest runs and how these runs go.
///
/// Texts are NUL-terminated bytes. Times are `ZorGetUsec` readings, milliseconds. Plain fields
/// belong to the application's thread; atomic ones are written by one thread and read by others.
/// The layout is fixed: a `long` is one machine word.
struct ZorDeviceState {
  char ssid[kZorSsidSize];
  char password[kZorPasswordSize];
  std::uint8_t appendData[kZorAppendSize];
  std::int32_t appendLen;                   ///< Valid bytes of `appendData`, 0..16.
  std::atomic<std::int32_t> smartStatus;    ///< 0, or the code of a sender that found no socket.
  std::atomic<long> smartStartMs;           ///< When smart configuration was started.
  std::atomic<long> smartLastMs;            ///< When the latest multicast datagram went out.
  std::atomic<std::int32_t> smartTimeout;   ///< Milliseconds that a run may last.
  std::atomic<std::int32_t> listenSocket;   ///< The listener's descriptor, or the bind's code.
  long upgradeStartMs;                      ///< When the upgrade was requested.
  std::atomic<std::int32_t> upgradeStatus;  ///< Progress in percent, or a negative code.
  char upgradeIp[kZorIpSize];
  char upgradeUrl[kZorUpgradeUrlSize];
};

/// The one instance, zero at load.
ZOR_API extern ZorDeviceState s_ZorDevice;
