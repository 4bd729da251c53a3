#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#import "bindings/objc/ZORObjC/ZORObjC.h"
#include "tests/support/UdpPeer.h"

namespace {

using Strings = std::vector<std::string>;

/// Serves the main run loop until `condition` holds; false when it does not within `limitMs`.
template <class Condition>
bool runUntil(Condition condition, int limitMs) {
  NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:patience(limitMs) / 1000.0];
  while (!condition()) {
    if ([limit timeIntervalSinceNow] <= 0) return false;
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                             beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.02]];
  }
  return true;
}

}  // namespace

/// Records what it hears. It throws when it hears of a module called "bad".
@interface Finder : NSObject <ZORSuiteDelegate> {
 @public
  Strings* found;  ///< The test's.
  bool* gone;      ///< The test's, or null.
}
@end

@implementation Finder
- (void)dealloc {
  if (gone != nullptr) *gone = true;
  [super dealloc];
}
- (void)record:(NSString*)text {
  found->push_back([text UTF8String]);
  if (![NSThread isMainThread]) found->push_back("not on the main thread");
  if ([text hasPrefix:@"bad"]) [NSException raise:@"Bad" format:@"module"];
}
- (void)onSearchFound:(NSString*)moduleId
            MODULE_IP:(NSString*)MODULE_IP
           MODULE_VER:(NSString*)MODULE_VER
           MODULE_CAP:(NSString*)MODULE_CAP
           MODULE_EXT:(NSString*)MODULE_EXT {
  [self record:[NSString stringWithFormat:@"search %@ %@ %@ %@ %@", moduleId, MODULE_IP, MODULE_VER,
                                          MODULE_CAP, MODULE_EXT]];
}
- (void)onSmartFound:(NSString*)moduleId
           MODULE_IP:(NSString*)MODULE_IP
          MODULE_VER:(NSString*)MODULE_VER
          MODULE_CAP:(NSString*)MODULE_CAP
          MODULE_EXT:(NSString*)MODULE_EXT {
  [self record:[NSString stringWithFormat:@"%@ %@ %@ %@ %@", moduleId, MODULE_IP, MODULE_VER, MODULE_CAP,
                                          MODULE_EXT]];
}
@end

/// Takes the texts of an announcement and of an answer as bytes.
@interface ByteFinder : Finder
@end

@implementation ByteFinder
- (void)onSearchFoundData:(NSData*)moduleId
                MODULE_IP:(NSString*)MODULE_IP
               MODULE_VER:(NSData*)MODULE_VER
               MODULE_CAP:(NSData*)MODULE_CAP
               MODULE_EXT:(NSData*)MODULE_EXT {
  [self onSmartFoundData:moduleId
               MODULE_IP:MODULE_IP
              MODULE_VER:MODULE_VER
              MODULE_CAP:MODULE_CAP
              MODULE_EXT:MODULE_EXT];
}
- (void)onSmartFoundData:(NSData*)moduleId
               MODULE_IP:(NSString*)MODULE_IP
              MODULE_VER:(NSData*)MODULE_VER
              MODULE_CAP:(NSData*)MODULE_CAP
              MODULE_EXT:(NSData*)MODULE_EXT {
  found->push_back([MODULE_IP UTF8String]);
  for (NSData* const data : {moduleId, MODULE_VER, MODULE_CAP, MODULE_EXT}) {
    found->emplace_back(static_cast<const char*>([data bytes]), [data length]);
  }
}
@end

@interface TracingWrapper : ZORBroadcast_SSID_Password {
 @public
  Strings* lines;  ///< The test's.
}
@end

@implementation TracingWrapper
- (void)LogStr:(NSString*)text {
  lines->push_back([text UTF8String]);
  [super LogStr:text];
}
@end

namespace {

class Objc : public testing::Test {
 protected:
  Objc() {
    finder->found = &found;
    [suite setDelegate:finder];
  }
  ~Objc() override {
    [suite setDelegate:nil];
    [suite SmartConfigStop];
    [suite release];
    [finder release];
    [pool drain];
  }

  void announce(const std::string& id, const std::string& rest = ",ver=1,cap=2") const {
    module.send("xcmd_notify:0:mac=" + id + rest, kZorAnnouncementPort);
  }

  void expectFound(const Strings& expected) {
    EXPECT_TRUE(runUntil([&] { return found.size() >= expected.size(); }, 3000));
    EXPECT_EQ(found, expected);
  }

  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  Strings found;
  Finder* finder = [[Finder alloc] init];
  ZORSuite* suite = [[ZORSuite alloc] init];
  UdpPeer module{0, "127.0.0.1"};
};

TEST_F(Objc, ReportsModulesOnTheMainRunLoop) {
  EXPECT_EQ([suite SmartConfigOnlineListen:kZorAnnouncementPort], 25010);
  announce("A", ",ver=1,cap=2,x=9");
  announce("bad");
  announce("Caf\xC3\xA9");
  announce("Caf\xE9");
  expectFound({"A 127.0.0.1 1 2 x=9", "bad 127.0.0.1 1 2 ", "Caf\xC3\xA9 127.0.0.1 1 2 ",
               "Caf\xC3\xA9 127.0.0.1 1 2 "});
  EXPECT_EQ([suite SmartConfigReport].listener.received.reported, 4);

  const UdpPeer searched(25000);
  [suite DeviceSearch];
  searched.answer(searched.receive(), "xcmd_rsp:0:mac=S,ver=3,cap=4");
  EXPECT_TRUE(runUntil([&] { return found.size() == 5; }, 3000));
  EXPECT_EQ(found.back().substr(0, 9), "search S ");
}

TEST_F(Objc, ReportsBytesToADelegateThatWantsThem) {
  ByteFinder* const bytes = [[[ByteFinder alloc] init] autorelease];
  bytes->found = &found;
  [suite setDelegate:bytes];
  EXPECT_EQ([suite delegate], bytes);
  [suite SmartConfigOnlineListen:kZorAnnouncementPort];
  announce("Caf\xE9", ",ver=\xFF,cap=\x80,\xC3");
  expectFound({"127.0.0.1", "Caf\xE9", "\xFF", "\x80", "\xC3"});
}

TEST_F(Objc, KeepsNoDelegateAliveAndForgetsItWithTheSuite) {
  bool gone = false;
  finder->gone = &gone;
  [suite SmartConfigOnlineListen:kZorAnnouncementPort];
  announce("A");
  ASSERT_TRUE(waitUntil([&] { return [suite SmartConfigReport].listener.received.reported == 1; }, 3000));
  [suite release];  // Its callback is on the way to the run loop.
  suite = [[ZORSuite alloc] init];
  announce("B");
  EXPECT_TRUE(runUntil([&] { return [suite SmartConfigReport].listener.received.lines == 2; }, 3000))
      << "the listener runs on";
  EXPECT_FALSE(runUntil([&] { return !found.empty(); }, 100));
  [finder release];
  EXPECT_TRUE(gone);
  finder = nil;
}

TEST_F(Objc, PassesTextsAsBytes) {
  const auto field = [](const char* text) { return std::string(text); };
  [suite SmartConfigV5_Start:@"Caf\u00e9" PASSWORD:@"p\u20ac" TIMEOUT:1000];
  EXPECT_EQ(field(s_ZorDevice.ssid) + "|" + s_ZorDevice.password, "Caf\xC3\xA9|p\xE2\x82\xAC");
  [suite SmartConfigV3_StartData:[NSData dataWithBytes:"\xE9\xFF" length:2]
                        PASSWORD:[NSData dataWithBytes:"\x80q" length:2]
                         TIMEOUT:1000];
  EXPECT_EQ(field(s_ZorDevice.ssid) + "|" + s_ZorDevice.password, "\xE9\xFF|\x80q");
  [suite SmartConfigV5_StartData:[NSData dataWithBytes:"\xE8" length:1] PASSWORD:[NSData data] TIMEOUT:1000];
  EXPECT_EQ(field(s_ZorDevice.ssid) + "|" + s_ZorDevice.password, "\xE8|");
  const unichar half = 0xD83D;
  [suite SmartConfigV3_Start:[NSString stringWithCharacters:&half length:1] PASSWORD:nil TIMEOUT:1000];
  EXPECT_STREQ(s_ZorDevice.password, "") << "nil counts as empty, and half a character is no crash";
  [suite DeviceUpgrade:@"127.0.0.1" URL:@"https://no"];
  EXPECT_TRUE(runUntil([&] { return [suite DeviceUpgradeProgress] == kZorUpgradeNotHttp; }, 3000));
}

TEST_F(Objc, PassesNumbersAndData) {
  [suite SmartConfigV5_Append:[NSData dataWithBytes:"0123456789abcdefXYZ" length:19]];
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(s_ZorDevice.appendData)), "0123456789abcdef");
  [suite SmartConfigV5_Append:nil];
  EXPECT_EQ(s_ZorDevice.appendLen, 0);
  EXPECT_EQ(s_ZorDevice.appendData[0], '0') << "none keeps the bytes";
  [suite SmartConfigV5_Append:[NSData data]];
  EXPECT_EQ(s_ZorDevice.appendData[0], 0) << "an empty buffer clears them";

  [suite SmartConfigV5_SetProperty:[NSData dataWithBytes:"\x1f\1\2\3\4\5\6\7\x8\x9\xa\xb\xc\xd" length:14]];
  EXPECT_EQ(s_ZorSmart5_McLen + s_ZorSmart5_BcLoopRepeat, 31 + 13);
  [suite SmartConfigV5_MixV3Enable:7];
  EXPECT_EQ(s_ZorSmart5_MixV3, 7);
  [suite DeviceSearchSetProperty:70 COUNT:3];
  EXPECT_EQ(s_ZorSearchInterval * 1000 + s_ZorSearchMax, 70003);
  EXPECT_TRUE([[suite GetLibraryVersion] isEqualToString:@"3.5.1"]);
  EXPECT_FALSE(ZORSetInterface(@"nowhere0"));
  EXPECT_TRUE(ZORSetInterface(@"zor0"));
}

TEST_F(Objc, ProvisionsWithOneCall) {
  const UdpPeer taken(25010);
  TracingWrapper* const wrapper = [[[TracingWrapper alloc] init] autorelease];
  Strings lines;
  wrapper->lines = &lines;
  [wrapper stopBroadcast];
  EXPECT_EQ([wrapper myZorSuite], nil);
  [wrapper startBroadcast_SSID:@"home" Password:@"secret"];
  EXPECT_EQ(lines, (Strings{"append(3)= <01b361>", "SmartConfig v5 start..."}));
  EXPECT_EQ(s_ZorDevice.smartTimeout, 100000);
  const auto report = [&] { return [[wrapper myZorSuite] SmartConfigReport]; };
  ASSERT_TRUE(
      runUntil([&] { return report().multicast.datagrams > 0 && report().broadcast.datagrams > 0; }, 3000));
  EXPECT_EQ(report().broadcast.state, ZORWorkerStateRunning);
  EXPECT_EQ(report().listener.port, 25011);
  [wrapper stopBroadcast];
  ASSERT_TRUE(runUntil([&] { return report().listener.state == ZORWorkerStateStopped; }, 3000));
}

}  // namespace
