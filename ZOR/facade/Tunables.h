#pragma once

#include <atomic>
#include <cstdint>

#include "ZOR/platform/Export.h"

/// A process-wide number that the workers read afresh at every use.
///
/// It reads as and is assigned from a 32-bit integer, from any thread. An assignment wakes the
/// workers that wait, so a changed interval counts in the wait that it finds going on.
class ZOR_API ZorTunable {
 public:
  constexpr ZorTunable(std::int32_t value) : value_(value) {}  // NOLINT: reads like an integer
  ZorTunable(const ZorTunable&) = delete;
  ZorTunable& operator=(const ZorTunable& other) {  // NOLINT(cert-oop54-cpp): to itself is no harm
    return *this = std::int32_t{other};
  }

  ZorTunable& operator=(std::int32_t value);
  operator std::int32_t() const { return value_.load(); }  // NOLINT: reads like an integer

  /// The number itself, for a wait that follows its changes.
  const std::atomic<std::int32_t>& value() const { return value_; }

 private:
  std::atomic<std::int32_t> value_;
};

// Version 5 pacing. Intervals are milliseconds, 0 or less for none; repeats are counts. Lengths are
// the datagram length bases of their channel, bytes; a base of 0 switches a channel off at a start.
// `ZorSuite::SmartConfigV5_SetProperty` sets all fourteen, in this order, to 0..255 each.
ZOR_API extern ZorTunable s_ZorSmart5_McLen;            ///< Multicast length base.
ZOR_API extern ZorTunable s_ZorSmart5_McCharInterval;   ///< Multicast wait after each datagram.
ZOR_API extern ZorTunable s_ZorSmart5_McLoopInterval;   ///< Multicast wait after each cycle.
ZOR_API extern ZorTunable s_ZorSmart5_McBlockInterval;  ///< Multicast wait after each block.
ZOR_API extern ZorTunable s_ZorSmart5_McTagRepeat;      ///< Multicast sync datagrams per cycle.
ZOR_API extern ZorTunable s_ZorSmart5_McDataRepeat;     ///< Multicast data parts per cycle.
ZOR_API extern ZorTunable s_ZorSmart5_McLoopRepeat;     ///< Multicast cycles per block.
ZOR_API extern ZorTunable s_ZorSmart5_BcLen;            ///< Broadcast length base.
ZOR_API extern ZorTunable s_ZorSmart5_BcCharInterval;   ///< Broadcast wait after each datagram.
ZOR_API extern ZorTunable s_ZorSmart5_BcLoopInterval;   ///< Broadcast wait after each cycle.
ZOR_API extern ZorTunable s_ZorSmart5_BcBlockInterval;  ///< Broadcast wait after each block.
ZOR_API extern ZorTunable s_ZorSmart5_BcTagRepeat;      ///< Broadcast repeats of each sync datagram.
ZOR_API extern ZorTunable s_ZorSmart5_BcDataRepeat;     ///< Broadcast repeats of each data datagram.
ZOR_API extern ZorTunable s_ZorSmart5_BcLoopRepeat;     ///< Broadcast cycles per block.

/// Exactly 1 at the start of a version 5 run mixes version 3 frames into its multicast channel.
ZOR_API extern std::atomic<std::uint8_t> s_ZorSmart5_MixV3;

ZOR_API extern ZorTunable s_ZorSearchMax;       ///< Requests of a search; below 1 it sends none.
ZOR_API extern ZorTunable s_ZorSearchInterval;  ///< Milliseconds that must pass between requests.
