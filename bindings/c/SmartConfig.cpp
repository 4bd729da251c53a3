#include <algorithm>
#include <array>

#include "bindings/c/Support.h"

using zor::c::isGiven;
using zor::c::viewOf;

static_assert(ZOR_C_MAX_SSID_LENGTH == kZorMaxSsidLength);
static_assert(ZOR_C_MAX_PASS_PHRASE_LENGTH == kZorMaxPassPhraseLength);
static_assert(ZOR_C_MAX_APPEND_LENGTH == kZorMaxAppendLength);
static_assert(ZOR_C_MAX_PAYLOAD_LENGTH == kZorMaxPayloadLength);
static_assert(ZOR_C_ANNOUNCEMENT_PORT == kZorAnnouncementPort);

namespace {

/// Calls a start that takes credentials.
std::int32_t startWith(void (ZorSuite::*start)(std::string_view, std::string_view, std::int32_t),
                       zor_suite* suite, const char* ssid, std::size_t ssidLength, const char* passPhrase,
                       std::size_t passPhraseLength, std::int32_t timeoutMs) {
  if (suite == nullptr || !isGiven(ssid, ssidLength) || !isGiven(passPhrase, passPhraseLength)) {
    return ZOR_ERROR_NULL;
  }
  (suite->suite.*start)(viewOf(ssid, ssidLength), viewOf(passPhrase, passPhraseLength), timeoutMs);
  return ZOR_OK;
}

}  // namespace

std::int32_t zor_smart_config_v5_start(zor_suite* suite, const char* ssid, std::size_t ssid_length,
                                       const char* pass_phrase, std::size_t pass_phrase_length,
                                       std::int32_t timeout_ms) {
  return startWith(&ZorSuite::SmartConfigV5_Start, suite, ssid, ssid_length, pass_phrase, pass_phrase_length,
                   timeout_ms);
}

std::int32_t zor_smart_config_v3_start(zor_suite* suite, const char* ssid, std::size_t ssid_length,
                                       const char* pass_phrase, std::size_t pass_phrase_length,
                                       std::int32_t timeout_ms) {
  return startWith(&ZorSuite::SmartConfigV3_Start, suite, ssid, ssid_length, pass_phrase, pass_phrase_length,
                   timeout_ms);
}

std::int32_t zor_smart_config_v5_append(zor_suite* suite, const std::uint8_t* bytes, std::size_t length) {
  if (suite == nullptr || !isGiven(bytes, length)) return ZOR_ERROR_NULL;
  suite->suite.SmartConfigV5_Append(bytes, length);
  return ZOR_OK;
}

std::int32_t zor_smart_config_v5_set_property(zor_suite* suite, const std::uint8_t* bytes,
                                              std::size_t length) {
  if (suite == nullptr || bytes == nullptr) return ZOR_ERROR_NULL;
  if (length < sizeof ZorPace::values) return ZOR_ERROR_ARGUMENT;
  suite->suite.SmartConfigV5_SetProperty(bytes, length);
  return ZOR_OK;
}

std::int32_t zor_smart_config_v5_mix_v3_enable(zor_suite* suite, std::uint8_t flag) {
  if (suite == nullptr) return ZOR_ERROR_NULL;
  suite->suite.SmartConfigV5_MixV3Enable(flag);
  return ZOR_OK;
}

std::int32_t zor_smart_config_online_listen(zor_suite* suite, std::int32_t port) {
  if (suite == nullptr) return ZOR_ERROR_NULL;
  const std::int32_t bound = suite->suite.SmartConfigOnlineListen(port);
  return bound < 0 ? ZOR_ERROR_SYSTEM : bound;
}

std::int32_t zor_smart_config_stop(zor_suite* suite) {
  if (suite == nullptr) return ZOR_ERROR_NULL;
  suite->suite.SmartConfigStop();
  return ZOR_OK;
}

std::int32_t zor_smart_config_progress(zor_suite* suite, std::int32_t* progress) {
  if (suite == nullptr || progress == nullptr) return ZOR_ERROR_NULL;
  *progress = suite->suite.SmartConfigProgress();
  return ZOR_OK;
}

std::int32_t zor_smart_config_status(std::int32_t* status) {
  if (status == nullptr) return ZOR_ERROR_NULL;
  *status = s_ZorDevice.smartStatus;
  return ZOR_OK;
}

std::int32_t zor_make_port_record(std::int32_t port, std::uint8_t record[3]) {
  if (record == nullptr) return ZOR_ERROR_NULL;
  if (port < 1 || port > 65535) return ZOR_ERROR_ARGUMENT;
  const std::array<std::uint8_t, 3> made = ZorMakePortRecord(port);
  std::copy(made.begin(), made.end(), record);
  return ZOR_OK;
}
