#include <sys/resource.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "tests/support/SuiteTest.h"

namespace {

using MemoryFault = SuiteTest;

TEST_F(MemoryFault, IsReportedAndPasses) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  int listening = 0, progress = 0, upgrade = 0;
  bool posted = true;
  const std::string line = "xcmd_notify:0:mac=M1,ver=1,cap=1";
  std::function<void()> closure = [big = std::array<char, 64>{}] { EXPECT_EQ(big[0], 0); };
  // What memory there is goes into blocks of ever smaller size, linked without further memory.
  void* blocks = nullptr;
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  const rlimit none{1, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_AS, &none), 0);
  for (std::size_t size = 1 << 20; size >= 16; size /= 2) {
    while (void* const block = std::malloc(size)) {
      *static_cast<void**>(block) = blocks;
      blocks = block;
    }
  }
  module.send(line, kPort);  // The listener's thread may have an arena with memory left.
  {
    ZorSuite another;
    another.setDelegate(delegate);
    another.SmartConfigV5_Start("home", "secret", 1000);
    progress = another.SmartConfigProgress();
    another.DeviceSearch();
    another.DeviceUpgrade("127.0.0.1", "http://h/f");
    upgrade = another.DeviceUpgradeProgress();
    posted = ZorPostToMainQueue(std::move(closure));
    listening = another.SmartConfigOnlineListen(kPort);
  }
  setrlimit(RLIMIT_AS, &before);
  while (blocks != nullptr) std::free(std::exchange(blocks, *static_cast<void**>(blocks)));

  EXPECT_EQ(progress, -101);
  EXPECT_EQ(upgrade, -121);
  EXPECT_FALSE(posted);
  EXPECT_TRUE(listening == -1 || listening == kPort) << "the stack of the listener before may serve again";
  EXPECT_EQ(suite.SmartConfigOnlineListen(kPort), kPort) << "all is well again with memory";
  EXPECT_TRUE(isHeard("M2"));
}

}  // namespace
