#include <bit>
#include <memory>
#include <new>

#include "ZOR/ZorSuite.h"
#include "bindings/objc/CallDelegate.h"
#include "bindings/objc/Delegate.h"
#include "bindings/objc/MainRunLoop.h"
#include "bindings/objc/Pool.h"
#include "bindings/objc/Text.h"
#include "bindings/objc/ZORObjC/ZORObjC.h"

using zor::objc::Pool;
using zor::objc::utf8;
using zor::objc::view;

struct ZORSuiteState {
  ZorSuite suite;
};

static_assert(ZORWorkerStateNoThread == static_cast<std::int32_t>(ZorWorkerState::noThread));

@implementation ZORSuite

+ (void)initialize {
  if (self == [ZORSuite class]) ZorSetMainQueue(zor::objc::postToMainRunLoop);
}

- (id)init {
  self = [super init];
  if (self == nil) return nil;
  _state = new (std::nothrow) ZORSuiteState;
  if (_state != nullptr) return self;
  [self release];
  return nil;
}

- (void)dealloc {
  [self setDelegate:nil];  // The workers run on, and would report to a delegate that may be gone.
  delete _state;
  [super dealloc];
}

- (id<ZORSuiteDelegate>)delegate {
  const auto delegate = std::static_pointer_cast<zor::objc::Delegate>(_state->suite.delegate());
  return delegate ? delegate->target() : nil;
}

- (void)setDelegate:(id<ZORSuiteDelegate>)delegate {
  if (_state == nullptr) return;
  try {
    _state->suite.setDelegate(delegate != nil ? std::make_shared<zor::objc::Delegate>(delegate) : nullptr);
  } catch (const std::bad_alloc&) {
    _state->suite.setDelegate(nullptr);
  }
}

- (NSString*)GetLibraryVersion {
  return ZORTextOfBytes(zor::objc::data(_state->suite.GetLibraryVersion()));
}

- (void)DeviceSearch {
  _state->suite.DeviceSearch();
}

- (void)DeviceSearchSetProperty:(int32_t)interval COUNT:(int32_t)COUNT {
  _state->suite.DeviceSearchSetProperty(interval, COUNT);
}

- (void)DeviceUpgrade:(NSString*)IP URL:(NSString*)URL {
  const Pool pool;
  _state->suite.DeviceUpgrade(view(utf8(IP)), view(utf8(URL)));
}

- (int32_t)DeviceUpgradeProgress {
  return _state->suite.DeviceUpgradeProgress();
}

- (int32_t)SmartConfigOnlineListen:(int32_t)port {
  return _state->suite.SmartConfigOnlineListen(port);
}

- (void)SmartConfigStop {
  _state->suite.SmartConfigStop();
}

- (int32_t)SmartConfigProgress {
  return _state->suite.SmartConfigProgress();
}

- (void)SmartConfigV5_Start:(NSString*)SSID PASSWORD:(NSString*)PASSWORD TIMEOUT:(int32_t)TIMEOUT {
  const Pool pool;
  [self SmartConfigV5_StartData:utf8(SSID) PASSWORD:utf8(PASSWORD) TIMEOUT:TIMEOUT];
}

- (void)SmartConfigV5_StartData:(NSData*)SSID PASSWORD:(NSData*)PASSWORD TIMEOUT:(int32_t)TIMEOUT {
  _state->suite.SmartConfigV5_Start(view(SSID), view(PASSWORD), TIMEOUT);
}

- (void)SmartConfigV5_Append:(NSData*)bytes {
  // An empty buffer's address may be null, which would mean none.
  const std::uint8_t empty = 0;
  const auto* const content = [bytes length] > 0 ? static_cast<const std::uint8_t*>([bytes bytes]) : &empty;
  _state->suite.SmartConfigV5_Append(bytes != nil ? content : nullptr, [bytes length]);
}

- (void)SmartConfigV5_SetProperty:(NSData*)bytes {
  _state->suite.SmartConfigV5_SetProperty(static_cast<const std::uint8_t*>([bytes bytes]), [bytes length]);
}

- (void)SmartConfigV5_MixV3Enable:(uint8_t)flag {
  _state->suite.SmartConfigV5_MixV3Enable(flag);
}

- (void)SmartConfigV3_Start:(NSString*)SSID PASSWORD:(NSString*)PASSWORD TIMEOUT:(int32_t)TIMEOUT {
  const Pool pool;
  [self SmartConfigV3_StartData:utf8(SSID) PASSWORD:utf8(PASSWORD) TIMEOUT:TIMEOUT];
}

- (void)SmartConfigV3_StartData:(NSData*)SSID PASSWORD:(NSData*)PASSWORD TIMEOUT:(int32_t)TIMEOUT {
  _state->suite.SmartConfigV3_Start(view(SSID), view(PASSWORD), TIMEOUT);
}

- (ZORRunReport)SmartConfigReport {
  return std::bit_cast<ZORRunReport>(_state->suite.SmartConfigReport());
}

- (ZORSearchReport)DeviceSearchReport {
  return std::bit_cast<ZORSearchReport>(_state->suite.DeviceSearchReport());
}

- (ZORUpgradeReport)DeviceUpgradeReport {
  return std::bit_cast<ZORUpgradeReport>(_state->suite.DeviceUpgradeReport());
}

@end

BOOL ZORSetInterface(NSString* name) {
  const Pool pool;
  return ZorSetInterface(view(utf8(name))) ? YES : NO;
}

void ZORSetLogSink(void (*sink)(const char* line)) {
  ZorSetLogSink(sink);
}
