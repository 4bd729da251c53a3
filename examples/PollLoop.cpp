// A loop of the application's own, on poll: the library is one of the descriptors that it waits for.

#include <ZOR/ZorSuite.h>
#include <poll.h>

#include <chrono>
#include <memory>

#include "Finder.h"

int main(int argumentCount, char** arguments) {
  using Clock = std::chrono::steady_clock;
  const int seconds = secondsOf(argumentCount, arguments);
  const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
  const auto finder = std::make_shared<Finder>();
  ZorSuite suite;
  suite.setDelegate(finder);
  suite.SmartConfigOnlineListen(kZorAnnouncementPort);
  suite.SmartConfigV5_Start(arguments[1], arguments[2], seconds * 1000);

  pollfd waiting[] = {{ZorMainQueueDescriptor(), POLLIN, 0}};  // And the application's own descriptors.
  while (!finder->found && Clock::now() < end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    poll(waiting, 1, static_cast<int>(left.count()));
    if (waiting[0].revents != 0) ZorRunMainQueue(0);
  }
  suite.SmartConfigStop();
  return finder->found ? 0 : 1;
}
