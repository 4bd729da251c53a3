#include "ZOR/facade/Worker.h"

#include <cstring>
#include <exception>
#include <utility>

#include "ZOR/platform/Wipe.h"

namespace zor {
namespace {

RunInputs copyInputs() {
  RunInputs inputs;
  std::memcpy(inputs.ssid, s_ZorDevice.ssid, sizeof inputs.ssid);
  std::memcpy(inputs.password, s_ZorDevice.password, sizeof inputs.password);
  std::memcpy(inputs.appendData, s_ZorDevice.appendData, sizeof inputs.appendData);
  inputs.appendLen = s_ZorDevice.appendLen;
  std::memcpy(inputs.upgradeIp, s_ZorDevice.upgradeIp, sizeof inputs.upgradeIp);
  std::memcpy(inputs.upgradeUrl, s_ZorDevice.upgradeUrl, sizeof inputs.upgradeUrl);
  return inputs;
}

}  // namespace

bool Worker::start(ZorWorkerHandle& handle, std::shared_ptr<DelegateSlot> delegateSlot, Entry entry) {
  try {
    const auto worker = std::make_shared<Worker>(std::move(delegateSlot));
    handle.set(worker);
    const bool started = worker->thread_.start([worker, entry, &handle] {
      (worker->suite_.*entry)();
      handle.clear();
    });
    if (!started) handle.clear();
    return started;
  } catch (const std::exception&) {
    handle.clear();
    return false;
  }
}

Worker::Worker(std::shared_ptr<DelegateSlot> delegateSlot)
    : inputs_(copyInputs()), suite_(std::move(delegateSlot), this) {}

Worker::~Worker() {
  wipe(&inputs_, sizeof inputs_);
}

void Worker::announceEnd() {
  const MutexLock lock(mutex_);
  ended_ = true;
  condition_.notifyAll();
}

void Worker::waitForEnd() {
  const MutexLock lock(mutex_);
  while (!ended_) condition_.wait(mutex_);
}

}  // namespace zor
