#include "ZOR/facade/SuiteInterface.h"

#include <exception>
#include <utility>

#include "ZOR/facade/DelegateSlot.h"
#include "ZOR/facade/Version.h"

std::string libVer;

ZorSuiteDelegate::~ZorSuiteDelegate() = default;

ZorSuite::ZorSuite() {
  try {
    delegateSlot_ = std::make_shared<zor::DelegateSlot>();
  } catch (const std::exception&) {
    // Without memory the suite works, but has no delegate.
  }
}

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

// A worker runs a function that its start made; nothing is left to do for whoever calls an entry.
void ZorSuite::threadDeviceSearch() {}
void ZorSuite::threadSmartOnlineListen() {}
void ZorSuite::threadSmartConfigV3() {}
void ZorSuite::threadSmartConfigV5_mc() {}
void ZorSuite::threadSmartConfigV5_bc() {}
void ZorSuite::threadUpgrade() {}
