#include "cli/TimeStamp.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace zor::cli {

std::string timeStamp() {
  using namespace std::chrono;
  const auto now = floor<milliseconds>(system_clock::now());
  const std::time_t second = system_clock::to_time_t(now);
  std::tm utc{};
  gmtime_r(&second, &utc);
  char date[32];
  const std::size_t length = std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
  char fraction[8];
  std::snprintf(fraction, sizeof fraction, ".%03dZ", static_cast<int>((now - floor<seconds>(now)).count()));
  return std::string(date, length) + fraction;
}

}  // namespace zor::cli
