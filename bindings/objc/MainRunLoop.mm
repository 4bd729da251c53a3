#include "bindings/objc/MainRunLoop.h"

#include <utility>

#include "bindings/objc/Pool.h"

using Closure = std::function<void()>;

/// One closure on its way to the main run loop.
@interface ZORPostedClosure : NSObject {
 @private
  void* _closure;  ///< A `Closure`, whose type GCC cannot encode.
}
- (id)initWithClosure:(void*)closure;
- (void)run;
@end

@implementation ZORPostedClosure

- (id)initWithClosure:(void*)closure {
  self = [super init];
  if (self != nil) _closure = closure;
  return self;
}

- (void)dealloc {
  delete static_cast<Closure*>(_closure);
  [super dealloc];
}

- (void)run {
  (*static_cast<Closure*>(_closure))();
}

@end

void zor::objc::postToMainRunLoop(std::function<void()> closure) {
  const Pool pool;
  void* const kept = new Closure(std::move(closure));
  ZORPostedClosure* const posted = [[[ZORPostedClosure alloc] initWithClosure:kept] autorelease];
  [posted performSelectorOnMainThread:@selector(run) withObject:nil waitUntilDone:NO];
}
