#include "ZOR/smartconfig/SenderInputs.h"

#include <cstring>

#include "ZOR/state/Tunables.h"

namespace zor {

SenderInputs copySenderInputs() {
  SenderInputs inputs;
  std::memcpy(inputs.ssid, s_ZorDevice.ssid, sizeof inputs.ssid);
  std::memcpy(inputs.password, s_ZorDevice.password, sizeof inputs.password);
  std::memcpy(inputs.appendData, s_ZorDevice.appendData, sizeof inputs.appendData);
  inputs.appendLen = s_ZorDevice.appendLen;
  inputs.mixV3 = s_ZorSmart5_MixV3 == 1;
  return inputs;
}

}  // namespace zor
