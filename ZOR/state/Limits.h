#pragma once

#include <cstddef>

/// \file
/// How much a run of smart configuration carries, bytes. What is longer is cut.

inline constexpr std::size_t kZorMaxSsidLength = 32;        ///< IEEE 802.11.
inline constexpr std::size_t kZorMaxPassPhraseLength = 64;  ///< A key of 64 hexadecimal digits (IEEE 802.11).
inline constexpr std::size_t kZorMaxAppendLength = 16;      ///< Application data, version 5 only.

/// SSID, pass phrase and application data together in version 5; the application data give way.
inline constexpr std::size_t kZorMaxPayloadLength = 96;
