#pragma once

#include <string>

#include "cli/JsonText.h"
#include "receiver/analysis/Report.h"

namespace zor::cli {

/// "toward the access point" and the like.
const char* legText(receiver::Leg leg);

/// "to_access_point" and the like.
const char* legName(receiver::Leg leg);

/// A sender's address, or its IPv4 address where the capture has no other.
std::string addressText(const receiver::MacAddress& address, bool isIpv4);

/// What was measured on a leg, in lines without the end of the last.
std::string legLines(const receiver::LegReport& leg);

Json legJson(const receiver::LegReport& leg);

}  // namespace zor::cli
