#include <algorithm>
#include <cstddef>
#include <cstring>

#include "bindings/c/Support.h"

// A new state of a worker gets a name in zorsuite.h too.
static_assert(ZOR_STATE_IDLE == static_cast<int>(ZorWorkerState::idle));
static_assert(ZOR_STATE_RUNNING == static_cast<int>(ZorWorkerState::running));
static_assert(ZOR_STATE_FINISHED == static_cast<int>(ZorWorkerState::finished));
static_assert(ZOR_STATE_TIMED_OUT == static_cast<int>(ZorWorkerState::timedOut));
static_assert(ZOR_STATE_STOPPED == static_cast<int>(ZorWorkerState::stopped));
static_assert(ZOR_STATE_REPLACED == static_cast<int>(ZorWorkerState::replaced));
static_assert(ZOR_STATE_NO_SOCKET == static_cast<int>(ZorWorkerState::noSocket));
static_assert(ZOR_STATE_NO_THREAD == static_cast<int>(ZorWorkerState::noThread));

namespace {

/// A larger `size` is that of a struct whose `size` was not set.
constexpr std::size_t kLargestReport = 4096;

std::int32_t convert(ZorWorkerState state) {
  return static_cast<std::int32_t>(state);
}

zor_system_error convert(const ZorSystemError& error) {
  return {error.number, 0, error.atMs};
}

zor_sender_report convert(const ZorSenderReport& sender) {
  return {convert(sender.state), 0,
          sender.datagrams,      sender.bytes,
          sender.failedSends,    sender.socketsOpened,
          sender.cycles,         sender.blocks,
          convert(sender.error)};
}

zor_line_report convert(const ZorLineReport& lines) {
  return {lines.datagrams,       lines.lines,   lines.reported,     lines.repeats,
          lines.withoutDelegate, lines.dropped, lines.otherContent, lines.empty};
}

zor_listener_report convert(const ZorListenerReport& listener) {
  return {convert(listener.state), listener.port, convert(listener.received), listener.socketsOpened,
          convert(listener.error)};
}

zor_run_report convert(const ZorRunReport& run) {
  return {sizeof(zor_run_report), convert(run.multicast), convert(run.broadcast), convert(run.listener)};
}

zor_search_report convert(const ZorSearchReport& search) {
  return {sizeof(zor_search_report), convert(search.state), 0,
          search.requestsSent,       search.requestsFailed, convert(search.received),
          search.socketsOpened,      convert(search.error)};
}

zor_upgrade_report convert(const ZorUpgradeReport& upgrade) {
  return {sizeof(zor_upgrade_report),
          convert(upgrade.state),
          0,
          upgrade.requestsSent,
          upgrade.requestsFailed,
          upgrade.datagrams,
          upgrade.answers,
          upgrade.otherAddress,
          upgrade.otherPort,
          upgrade.notAResponse,
          upgrade.socketsOpened,
          convert(upgrade.error)};
}

/// Stores the report that `ask` returns in the application's struct, of which `firstSize` bytes were in the
/// first version of this interface.
template <class Report, class OwnReport>
std::int32_t store(zor_suite* suite, OwnReport (ZorSuite::*ask)(), Report* report, std::size_t firstSize) {
  if (suite == nullptr || report == nullptr) return ZOR_ERROR_NULL;
  const std::size_t size = report->size;
  if (size < firstSize || size > kLargestReport) return ZOR_ERROR_ARGUMENT;
  const Report filled = convert((suite->suite.*ask)());
  auto* const bytes = reinterpret_cast<char*>(report);
  std::memcpy(bytes, &filled, std::min(size, sizeof filled));
  if (size > sizeof filled) std::memset(bytes + sizeof filled, 0, size - sizeof filled);
  report->size = size;
  return ZOR_OK;
}

/// The size of a struct whose last member was `member`.
#define ZOR_SIZE_UP_TO(type, member) (offsetof(type, member) + sizeof(type::member))

}  // namespace

std::int32_t zor_smart_config_report(zor_suite* suite, zor_run_report* report) {
  return store(suite, &ZorSuite::SmartConfigReport, report, ZOR_SIZE_UP_TO(zor_run_report, listener));
}

std::int32_t zor_device_search_report(zor_suite* suite, zor_search_report* report) {
  return store(suite, &ZorSuite::DeviceSearchReport, report, ZOR_SIZE_UP_TO(zor_search_report, error));
}

std::int32_t zor_device_upgrade_report(zor_suite* suite, zor_upgrade_report* report) {
  return store(suite, &ZorSuite::DeviceUpgradeReport, report, ZOR_SIZE_UP_TO(zor_upgrade_report, error));
}

std::int64_t zor_clock_ms() {
  return ZorGetUsec();
}
