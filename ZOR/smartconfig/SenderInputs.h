#pragma once

#include <cstdint>

#include "ZOR/platform/Wipe.h"
#include "ZOR/state/DeviceState.h"

namespace zor {

/// What a sender puts on the air: copied by the start, on the application's thread, and wiped in the end.
struct SenderInputs {
  SenderInputs() = default;
  ~SenderInputs() { wipe(this, sizeof *this); }
  SenderInputs(const SenderInputs&) = default;
  SenderInputs& operator=(const SenderInputs&) = default;

  char ssid[kZorSsidSize] = {};
  char password[kZorPasswordSize] = {};
  std::uint8_t appendData[kZorAppendSize] = {};
  std::int32_t appendLen = 0;
  bool mixV3 = false;  ///< Version 3 frames are mixed into the version 5 multicast channel.
};

/// Copies the inputs that the suite state holds now. Application's thread.
SenderInputs copySenderInputs();

}  // namespace zor
