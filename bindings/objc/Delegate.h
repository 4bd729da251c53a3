#pragma once

#include "ZOR/ZorSuite.h"
#include "bindings/objc/CallDelegate.h"
#include "bindings/objc/Pool.h"
#include "bindings/objc/Text.h"

#if __has_feature(objc_arc_weak)
#define ZOR_WEAK __weak
#elif defined(__APPLE__)
#error "Compile the binding with -fobjc-weak"
#else
#define ZOR_WEAK  // GCC's runtime knows no weak references: the application sets the delegate to nil.
#endif

namespace zor::objc {

/// Hands the library's callbacks to an Objective-C delegate, which it does not keep alive. Called on the main
/// thread.
class Delegate : public ZorSuiteDelegate {
 public:
  explicit Delegate(id<ZORSuiteDelegate> target) : target_(target) {}

  /// The Objective-C delegate, autoreleased, or nil once it has gone. Any thread.
  id<ZORSuiteDelegate> target() const { return [[target_ retain] autorelease]; }

  void onSearchFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                     const std::string& MODULE_CAP, const std::string& MODULE_EXT) override {
    const Pool pool;
    ZORCallSearchFound(
        target(), {data(moduleId), data(MODULE_IP), data(MODULE_VER), data(MODULE_CAP), data(MODULE_EXT)});
  }

  void onSmartFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                    const std::string& MODULE_CAP, const std::string& MODULE_EXT) override {
    const Pool pool;
    ZORCallSmartFound(
        target(), {data(moduleId), data(MODULE_IP), data(MODULE_VER), data(MODULE_CAP), data(MODULE_EXT)});
  }

 private:
  ZOR_WEAK id<ZORSuiteDelegate> target_;
};

}  // namespace zor::objc
