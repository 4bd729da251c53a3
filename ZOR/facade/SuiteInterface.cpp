#include "ZOR/facade/SuiteInterface.h"

#include <exception>
#include <utility>

#include "ZOR/facade/DelegateSlot.h"
#include "ZOR/facade/Version.h"
#include "ZOR/facade/Worker.h"

std::string libVer;

ZorSuiteDelegate::~ZorSuiteDelegate() = default;

ZorSuite::ZorSuite() {
  try {
    delegateSlot_ = std::make_shared<zor::DelegateSlot>();
  } catch (const std::exception&) {
    // Without memory the suite works, but has no delegate.
  }
}

ZorSuite::ZorSuite(std::shared_ptr<zor::DelegateSlot> delegateSlot, zor::Worker* worker)
    : delegateSlot_(std::move(delegateSlot)), worker_(worker) {}

ZorSuite::~ZorSuite() = default;

std::shared_ptr<ZorSuiteDelegate> ZorSuite::delegate() const {
  return delegateSlot_ ? delegateSlot_->get() : nullptr;
}

void ZorSuite::setDelegate(std::shared_ptr<ZorSuiteDelegate> delegate) {
  if (delegateSlot_) delegateSlot_->set(std::move(delegate));
}

std::string ZorSuite::GetLibraryVersion() {
  libVer = ZOR_VERSION;
  return ZOR_VERSION;
}

bool ZorSuite::startWorker(ZorWorkerHandle& handle, void (ZorSuite::*entry)()) {
  return zor::Worker::start(handle, delegateSlot_, entry);
}
