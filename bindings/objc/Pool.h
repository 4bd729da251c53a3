#pragma once

#import <Foundation/Foundation.h>

#if __has_feature(objc_arc)
#error "Compile the binding's own files without automatic reference counting: -fno-objc-arc"
#endif

namespace zor::objc {

/// Releases what is autoreleased while it lives. Callers and workers need not have a pool.
class Pool {
 public:
  Pool() : pool_([[NSAutoreleasePool alloc] init]) {}
  ~Pool() { [pool_ drain]; }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

 private:
  NSAutoreleasePool* pool_;
};

}  // namespace zor::objc
