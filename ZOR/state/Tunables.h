#pragma once

#include <atomic>
#include <cstdint>

#include "ZOR/platform/Export.h"

/// A process-wide number that the workers read afresh at every use.
///
/// It reads as and is assigned from a 32-bit integer, from any thread. An assignment wakes the
/// workers that wait, so a changed interval counts in the present wait.
class ZOR_API ZorTunable {
 public:
  /// Holds `value`. Wakes nobody.
  constexpr ZorTunable(std::int32_t value) : value_(value) {}  // NOLINT: reads like an integer
  ZorTunable(const ZorTunable&) = delete;

  /// Assigns the number that `other` holds.
  ZorTunable& operator=(const ZorTunable& other) {  // NOLINT(cert-oop54-cpp): to itself is no harm
    return *this = std::int32_t{other};
  }

  /// Takes any number, and wakes the workers that wait when it differs from the one before.
  ZorTunable& operator=(std::int32_t value);

  /// Returns the number that it holds now.
  operator std::int32_t() const { return value_.load(); }  // NOLINT: reads like an integer

  /// The number itself, for a wait that follows its changes.
  const std::atomic<std::int32_t>& value() const { return value_; }

 private:
  std::atomic<std::int32_t> value_;  ///< Read by the workers while others assign.
};

/// \file
/// The numbers that pace the workers. In version 5, intervals are milliseconds, 0 or less for none; repeats
/// are counts. Lengths are the datagram length bases of their channel, bytes; a base of 0 switches a channel
/// off at a start. `ZorSuite::SmartConfigV5_SetProperty` sets all fourteen, in this order, to 0..255 each.

ZOR_API extern ZorTunable s_ZorSmart5_McLen;            ///< Multicast length base; 30 at load.
ZOR_API extern ZorTunable s_ZorSmart5_McCharInterval;   ///< Multicast wait after each datagram; 30 at load.
ZOR_API extern ZorTunable s_ZorSmart5_McLoopInterval;   ///< Multicast wait after each cycle; 100 at load.
ZOR_API extern ZorTunable s_ZorSmart5_McBlockInterval;  ///< Multicast wait after each block; 0 at load.
ZOR_API extern ZorTunable s_ZorSmart5_McTagRepeat;      ///< Multicast sync datagrams per cycle; 1 at load.
ZOR_API extern ZorTunable s_ZorSmart5_McDataRepeat;     ///< Multicast data parts per cycle; 1 at load.
ZOR_API extern ZorTunable s_ZorSmart5_McLoopRepeat;     ///< Multicast cycles per block; 5 at load.
ZOR_API extern ZorTunable s_ZorSmart5_BcLen;            ///< Broadcast length base; 30 at load.
ZOR_API extern ZorTunable s_ZorSmart5_BcCharInterval;   ///< Broadcast wait after each datagram; 15 at load.
ZOR_API extern ZorTunable s_ZorSmart5_BcLoopInterval;   ///< Broadcast wait after each cycle; 100 at load.
ZOR_API extern ZorTunable s_ZorSmart5_BcBlockInterval;  ///< Broadcast wait after each block; 0 at load.
ZOR_API extern ZorTunable s_ZorSmart5_BcTagRepeat;      ///< Broadcast repeats per sync datagram; 1 at load.
ZOR_API extern ZorTunable s_ZorSmart5_BcDataRepeat;     ///< Broadcast repeats per data datagram; 1 at load.
ZOR_API extern ZorTunable s_ZorSmart5_BcLoopRepeat;     ///< Broadcast cycles per block; 5 at load.

/// Exactly 1 at the start of a version 5 run mixes version 3 frames into its multicast channel; 0 at load.
ZOR_API extern std::atomic<std::uint8_t> s_ZorSmart5_MixV3;

ZOR_API extern ZorTunable s_ZorSearchMax;       ///< Requests of a search, none below 1; 20 at load.
ZOR_API extern ZorTunable s_ZorSearchInterval;  ///< Milliseconds to pass between requests; 100 at load.
