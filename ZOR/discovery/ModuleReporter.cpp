#include "ZOR/discovery/ModuleReporter.h"

#include <exception>

#include "ZOR/facade/CopyText.h"
#include "ZOR/net/UdpSocket.h"
#include "ZOR/platform/MainQueue.h"

namespace zor {

std::int32_t ModuleReporter::receive(std::int32_t socket) {
  const std::int32_t length = ZorUdpRecvData(socket, line_, kLongestLine, ip_, nullptr);
  if (length > 0) judge(length);
  return length;
}

void ModuleReporter::judge(std::int32_t length) {
  if (!reader_.open(line_, length, tag_)) return;
  readFields();
  const ZorModuleRecord current = record();
  if (reported_.contains(current)) return;
  // A report that finds the queue full is left unrecorded, so the module's next line reports it.
  if (post()) reported_.add(current);
}

void ModuleReporter::readFields() {
  while (reader_.nextPair()) {
    const std::string_view key = reader_.key();
    if (key == "mac") copyText(reader_.value(), mac_);
    if (key == "ver") copyText(reader_.value(), ver_);
    if (key != "cap") continue;
    copyText(reader_.value(), cap_);
    copyText(reader_.rest(), ext_);
  }
}

ZorModuleRecord ModuleReporter::record() const {
  ZorModuleRecord record;
  copyText(mac_, record.mac);
  copyText(ip_, record.ip);
  copyText(ver_, record.ver);
  copyText(cap_, record.cap);
  return record;
}

/// True when the report is on its way, or nobody listens.
bool ModuleReporter::post() const {
  if (!delegateSlot_ || delegateSlot_->empty()) return true;
  try {
    return ZorPostToMainQueue([slot = delegateSlot_, callback = callback_, mac = std::string(mac_),
                               ip = std::string(ip_), ver = std::string(ver_), cap = std::string(cap_),
                               ext = std::string(ext_)] {
      if (const auto delegate = slot->get()) (*delegate.*callback)(mac, ip, ver, cap, ext);
    });
  } catch (const std::exception&) {
    return false;  // No memory for the closure.
  }
}

}  // namespace zor
