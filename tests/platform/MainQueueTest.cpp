#include <gtest/gtest.h>
#include <poll.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "ZOR/platform/PostReport.h"
#include "tests/support/LogCapture.h"

namespace {

bool readable() {
  pollfd queue{ZorMainQueueDescriptor(), POLLIN, 0};
  return poll(&queue, 1, 0) == 1;
}

TEST(MainQueue, RunsInOrderOnceOnTheCallersThread) {
  std::vector<int> ran;
  for (int i = 0; i < 3; ++i) {
    const auto post = i == 1 ? zor::postReport : ZorPostToMainQueue;
    post([&ran, i] {
      ran.push_back(i);
      if (i == 0) ZorPostToMainQueue([&ran] { ran.push_back(9); });
      if (i == 1) throw std::runtime_error("the application's");
    });
  }
  EXPECT_EQ(ZorRunMainQueue(0), 3) << "what is posted meanwhile is left to the next call";
  EXPECT_EQ(ZorRunMainQueue(0), 1);
  EXPECT_EQ(ran, (std::vector<int>{0, 1, 2, 9}));
  EXPECT_EQ(ZorRunMainQueue(0), 0);
}

TEST(MainQueue, WaitsForTheFirstAndNoLonger) {
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(ZorRunMainQueue(30), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(30));
  std::thread later([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ZorPostToMainQueue([] {});
  });
  EXPECT_EQ(ZorRunMainQueue(10000), 1);
  later.join();
}

TEST(MainQueue, HasADescriptorThatIsReadableWhileWorkWaits) {
  ZorPostToMainQueue([] {});
  EXPECT_TRUE(readable()) << "also for work from before its first use";
  ZorRunMainQueue(0);
  EXPECT_FALSE(readable());
  for (int i = 0; i < 3; ++i) ZorPostToMainQueue([] {});
  EXPECT_TRUE(readable());
  ZorRunMainQueue(0);
  EXPECT_FALSE(readable());
}

TEST(MainQueue, TakesAThousandAndTwentyFourOfEachKind) {
  const auto owned = std::make_shared<int>(0);
  const std::function<void()> closure = [owned] { ++*owned; };
  for (int i = 0; i < 1024; ++i) ASSERT_TRUE(zor::postReport(closure));
  EXPECT_FALSE(zor::postReport(closure));
  for (int i = 0; i < 1024; ++i) ASSERT_TRUE(ZorPostToMainQueue(closure));
  EXPECT_FALSE(ZorPostToMainQueue(closure));
  EXPECT_EQ(ZorRunMainQueue(0), 2048);
  EXPECT_EQ(*owned, 2048);
  EXPECT_EQ(owned.use_count(), 2) << "the test's two";
}

TEST(MainQueue, HandsClosuresToTheApplicationsLoop) {
  std::vector<std::function<void()>> loop;
  ZorPostToMainQueue([] {});
  ZorSetMainQueue([&loop](std::function<void()> closure) { loop.push_back(std::move(closure)); });
  int ran = 0;
  for (int i = 0; i < 1023; ++i) ASSERT_TRUE(ZorPostToMainQueue([&ran] { ++ran; }));
  EXPECT_FALSE(ZorPostToMainQueue([] {})) << "closures in the application's hands count as well";
  loop[0]();
  loop[0]();
  EXPECT_EQ(ran, 1) << "a closure runs once, however often it is called";
  EXPECT_TRUE(ZorPostToMainQueue([] {}));
  loop.clear();
  EXPECT_EQ(ZorRunMainQueue(0), 1) << "what the built-in queue held stays there";

  ZorSetMainQueue([](const std::function<void()>&) { throw std::runtime_error("no loop"); });
  EXPECT_FALSE(ZorPostToMainQueue([] {}));
  ZorSetMainQueue(nullptr);
  for (int i = 0; i < 1024; ++i) ASSERT_TRUE(ZorPostToMainQueue([] {})) << "dropped closures count no more";
}

TEST(LogSink, DropsWhatItThrows) {
  ZorSetLogSink([](const char*) { throw std::runtime_error("full"); });
  std::int32_t descriptor = ZorUdpBcInit();
  EXPECT_EQ(ZorUdpBcSendData(&descriptor, "", 70000, "127.0.0.1", 1), 0) << "a datagram too long to send";
  ZorSetLogSink(nullptr);
}

}  // namespace
