#include "ZOR/discovery/ModuleReporter.h"

#include <exception>

#include "ZOR/platform/PostReport.h"
#include "ZOR/state/CopyText.h"

namespace zor {
namespace {

/// A record's `cap` field has room for more than a line may fill.
constexpr std::size_t kMaxCapLength = 39;
static_assert(kMaxCapLength < sizeof ZorModuleRecord::cap);

}  // namespace

Received ModuleReporter::receive(std::int32_t socket) {
  char line[kMaxLineLength + 1];
  char address[sizeof current_.ip];
  const Received received = receiveNow(socket, line, kMaxLineLength, address, nullptr);
  if (received.length == 0) counters_.empty.add();
  if (received.length >= 0) counters_.datagrams.add();
  if (received.length > 0) take(line, received.length, address);
  return received;
}

void ModuleReporter::take(char* line, std::int32_t length, const char* address) {
  copyText(address, current_.ip);
  if (!reader_.open(line, length, tag_)) return counters_.otherContent.add();
  counters_.lines.add();
  readFields();
  if (reported_.contains(current_)) return counters_.repeats.add();
  report();
}

void ModuleReporter::report() {
  if (!delegateSlot_ || delegateSlot_->empty()) {
    counters_.withoutDelegate.add();
  } else if (hasPlaceForReport() && post()) {
    counters_.reported.add();
  } else {
    // Left unrecorded, so that the module's next line reports it.
    return counters_.dropped.add();
  }
  reported_.add(current_);
}

void ModuleReporter::readFields() {
  while (reader_.nextPair()) {
    const std::string_view key = reader_.key();
    const std::string_view value = reader_.value();
    if (key == "mac") copyText(value, current_.mac);
    if (key == "ver") copyText(value, current_.ver);
    if (key != "cap") continue;
    copyText(value.substr(0, kMaxCapLength), current_.cap);
    copyText(reader_.rest(), ext_);
  }
}

/// Returns false when the main-thread queue is full or there is no memory for the report.
bool ModuleReporter::post() const {
  try {
    return postReport([slot = delegateSlot_, callback = callback_, mac = std::string(current_.mac),
                       ip = std::string(current_.ip), ver = std::string(current_.ver),
                       cap = std::string(current_.cap), ext = std::string(ext_)] {
      if (const auto delegate = slot->get()) (*delegate.*callback)(mac, ip, ver, cap, ext);
    });
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace zor
