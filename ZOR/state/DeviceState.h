#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "ZOR/platform/Export.h"
#include "ZOR/state/Limits.h"

// Sizes of the fields: texts hold a NUL after their last byte.
inline constexpr std::size_t kZorSsidSize = kZorMaxSsidLength + 1;            ///< An SSID and a NUL.
inline constexpr std::size_t kZorPasswordSize = kZorMaxPassPhraseLength + 1;  ///< A pass phrase and a NUL.
inline constexpr std::size_t kZorAppendSize = kZorMaxAppendLength + 1;        ///< The data and a zero.
inline constexpr std::size_t kZorIpSize = 16;                                 ///< A dotted-quad address.
inline constexpr std::size_t kZorUpgradeUrlSize = 513;                        ///< A URL of at most 512 bytes.

/// Process-wide state of the suite: the inputs of the latest runs and how these runs go.
///
/// Texts are NUL-terminated bytes. Times are `ZorGetUsec` readings, milliseconds. Plain fields
/// belong to the application's thread; atomic ones are written by one thread and read by others.
/// The layout is fixed: a `long` is one machine word.
struct ZorDeviceState {
  char ssid[kZorSsidSize];                  ///< SSID of the latest smart configuration.
  char password[kZorPasswordSize];          ///< Its pass phrase.
  std::uint8_t appendData[kZorAppendSize];  ///< Application data of later version 5 runs.
  std::int32_t appendLen;                   ///< Valid bytes of `appendData`, 0..16.
  std::atomic<std::int32_t> smartStatus;    ///< 0, or the code of a sender that found no socket.
  std::atomic<long> smartStartMs;           ///< When smart configuration was started.
  std::atomic<long> smartLastMs;            ///< When the latest multicast datagram went out.
  std::atomic<std::int32_t> smartTimeout;   ///< Milliseconds that a run may last.
  std::atomic<std::int32_t> listenSocket;   ///< The listener's descriptor, or the bind's code.
  long upgradeStartMs;                      ///< When the upgrade was requested.
  std::atomic<std::int32_t> upgradeStatus;  ///< Progress in percent, or a negative code.
  char upgradeIp[kZorIpSize];               ///< Address of the module to upgrade.
  char upgradeUrl[kZorUpgradeUrlSize];      ///< URL of its firmware.
};

/// The one instance, zero at load.
ZOR_API extern ZorDeviceState s_ZorDevice;
