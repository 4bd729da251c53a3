#include <array>

#include "ZOR/ZorSuite.h"
#include "bindings/objc/Pool.h"
#include "bindings/objc/Text.h"
#include "bindings/objc/ZORObjC/ZORObjC.h"

using zor::objc::Pool;
using zor::objc::utf8;

namespace {

constexpr std::int32_t kRunMs = 100000;

/// Has the next run name `port` to the module, unless it is the usual one or there is no listener.
void appendPort(ZORBroadcast_SSID_Password* wrapper, int32_t port) {
  if (port == kZorAnnouncementPort || port < 0) {
    [[wrapper myZorSuite] SmartConfigV5_Append:nil];
    [wrapper LogStr:@"append = nil"];
    return;
  }
  const std::array<std::uint8_t, 3> bytes = ZorMakePortRecord(port);
  NSData* const record = [NSData dataWithBytes:bytes.data() length:bytes.size()];
  [[wrapper myZorSuite] SmartConfigV5_Append:record];
  [wrapper LogStr:[NSString stringWithFormat:@"append(3)= %@", record]];
}

}  // namespace

@implementation ZORBroadcast_SSID_Password

- (ZORSuite*)myZorSuite {
  return _myZorSuite;
}

- (void)setMyZorSuite:(ZORSuite*)suite {
  [suite retain];
  [_myZorSuite release];
  _myZorSuite = suite;
}

- (void)dealloc {
  [_myZorSuite release];
  [super dealloc];
}

- (void)startBroadcast_SSID:(NSString*)SSID Password:(NSString*)Password {
  const Pool pool;
  [self startBroadcast_SSIDData:utf8(SSID) Password:utf8(Password)];
}

- (void)startBroadcast_SSIDData:(NSData*)SSID Password:(NSData*)Password {
  const Pool pool;
  [self setMyZorSuite:[[[ZORSuite alloc] init] autorelease]];
  appendPort(self, [_myZorSuite SmartConfigOnlineListen:0]);
  [self LogStr:@"SmartConfig v5 start..."];
  [_myZorSuite SmartConfigV5_StartData:SSID PASSWORD:Password TIMEOUT:kRunMs];
}

- (void)stopBroadcast {
  [_myZorSuite SmartConfigStop];
  ZorLogLine("SmartConfig v5 stop...");
}

- (void)LogStr:(NSString*)text {
  const Pool pool;
  NSDateFormatter* const formatter = [[[NSDateFormatter alloc] init] autorelease];
  [formatter setDateFormat:@"HH:mm:ss"];
  NSArray* const parts = [NSArray arrayWithObjects:[formatter stringFromDate:[NSDate date]], text, nil];
  [self performSelectorOnMainThread:@selector(makeLine:) withObject:parts waitUntilDone:NO];
}

/// Makes the line of a time of day and a text, and drops it.
- (void)makeLine:(NSArray*)parts {
  [NSString stringWithFormat:@"%@] %@\r\n", [parts objectAtIndex:0], [parts lastObject]];
}

@end
