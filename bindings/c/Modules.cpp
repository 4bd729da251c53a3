#include "bindings/c/Support.h"

std::int32_t zor_device_search(zor_suite* suite) {
  if (suite == nullptr) return ZOR_ERROR_NULL;
  suite->suite.DeviceSearch();
  return ZOR_OK;
}

std::int32_t zor_device_search_set_property(zor_suite* suite, std::int32_t interval_ms, std::int32_t count) {
  if (suite == nullptr) return ZOR_ERROR_NULL;
  suite->suite.DeviceSearchSetProperty(interval_ms, count);
  return ZOR_OK;
}

std::int32_t zor_device_upgrade(zor_suite* suite, const char* ip, std::size_t ip_length, const char* url,
                                std::size_t url_length) {
  if (suite == nullptr || !zor::c::isGiven(ip, ip_length) || !zor::c::isGiven(url, url_length)) {
    return ZOR_ERROR_NULL;
  }
  suite->suite.DeviceUpgrade(zor::c::viewOf(ip, ip_length), zor::c::viewOf(url, url_length));
  return ZOR_OK;
}

std::int32_t zor_device_upgrade_progress(zor_suite* suite, std::int32_t* progress) {
  if (suite == nullptr || progress == nullptr) return ZOR_ERROR_NULL;
  *progress = suite->suite.DeviceUpgradeProgress();
  return ZOR_OK;
}
