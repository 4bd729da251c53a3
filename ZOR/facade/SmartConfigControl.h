#pragma once

#include <cstdint>
#include <string_view>

namespace zor {

/// Fills the suite state for a smart configuration run that begins now and may last `timeout` ms.
/// The application data stay as they are. Application's thread, with no sender of the run alive.
void storeSmartConfigInputs(std::string_view ssid, std::string_view password, std::int32_t timeout);

/// True until the run's time-out has passed. Any thread.
bool smartConfigTimeLeft();

}  // namespace zor
