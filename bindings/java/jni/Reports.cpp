#include <jni.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "bindings/c/zorsuite.h"
#include "bindings/java/jni/Natives.h"

namespace zor::java {
namespace {

/// The numbers of a report, in the order in which the Java classes read them.
class Numbers {
 public:
  template <class... Integers>
  void add(Integers... numbers) {
    ((numbers_[count_++] = numbers), ...);
  }

  void add(const zor_system_error& error) { add(error.number, error.at_ms); }

  void add(const zor_sender_report& sender) {
    add(sender.state, sender.datagrams, sender.bytes, sender.failed_sends, sender.sockets_opened,
        sender.cycles, sender.blocks);
    add(sender.error);
  }

  void add(const zor_line_report& lines) {
    add(lines.datagrams, lines.lines, lines.reported, lines.repeats, lines.without_delegate, lines.dropped,
        lines.other_content, lines.empty);
  }

  void add(const zor_listener_report& listener) {
    add(listener.state, listener.port);
    add(listener.received);
    add(listener.sockets_opened);
    add(listener.error);
  }

  /// An array of another length gets an exception that Java throws.
  void store(JNIEnv* environment, jlongArray array) const {
    environment->SetLongArrayRegion(array, 0, static_cast<jsize>(count_), numbers_.data());
  }

 private:
  std::array<jlong, 32> numbers_{};
  std::size_t count_ = 0;
};

void collect(Numbers& numbers, const zor_run_report& run) {
  numbers.add(run.multicast);
  numbers.add(run.broadcast);
  numbers.add(run.listener);
}

void collect(Numbers& numbers, const zor_search_report& search) {
  numbers.add(search.state, search.requests_sent, search.requests_failed);
  numbers.add(search.received);
  numbers.add(search.sockets_opened);
  numbers.add(search.error);
}

void collect(Numbers& numbers, const zor_upgrade_report& upgrade) {
  numbers.add(upgrade.state, upgrade.requests_sent, upgrade.requests_failed, upgrade.datagrams,
              upgrade.answers, upgrade.other_address, upgrade.other_port, upgrade.not_a_response,
              upgrade.sockets_opened);
  numbers.add(upgrade.error);
}

/// The native method that stores the report which `Ask` gives.
template <class Report, std::int32_t (*Ask)(zor_suite*, Report*)>
jint report(JNIEnv* environment, jclass, jlong suite, jlongArray array) {
  Report report{};
  report.size = sizeof report;
  const std::int32_t code = Ask(reinterpret_cast<zor_suite*>(suite), &report);
  if (code != ZOR_OK) return code;
  Numbers numbers;
  collect(numbers, report);
  numbers.store(environment, array);
  return ZOR_OK;
}

jlong clockMs(JNIEnv*, jclass) {
  return zor_clock_ms();
}

}  // namespace

void addReports(std::vector<JNINativeMethod>& methods) {
  methods.push_back(method("smartConfigReport", "(J[J)I", report<zor_run_report, zor_smart_config_report>));
  methods.push_back(
      method("deviceSearchReport", "(J[J)I", report<zor_search_report, zor_device_search_report>));
  methods.push_back(
      method("deviceUpgradeReport", "(J[J)I", report<zor_upgrade_report, zor_device_upgrade_report>));
  methods.push_back(method("clockMs", "()J", clockMs));
}

}  // namespace zor::java
