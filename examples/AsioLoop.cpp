// Asio's loop waits for the library's descriptor beside the application's own sockets and timers.

#include <ZOR/ZorSuite.h>

#include <asio.hpp>
#include <chrono>
#include <memory>

#include "Finder.h"

namespace {

using Descriptor = asio::posix::stream_descriptor;

/// Runs the callbacks whenever there are some.
void serve(Descriptor& descriptor) {
  descriptor.async_wait(Descriptor::wait_read, [&descriptor](const asio::error_code& error) {
    if (error) return;
    ZorRunMainQueue(0);
    serve(descriptor);
  });
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int seconds = secondsOf(argumentCount, arguments);
  const auto finder = std::make_shared<Finder>();
  ZorSuite suite;
  suite.setDelegate(finder);

  asio::io_context loop;
  Descriptor callbacks(loop, ZorMainQueueDescriptor());
  serve(callbacks);
  asio::steady_timer timeout(loop, std::chrono::seconds(seconds));
  timeout.async_wait([&loop](const asio::error_code&) { loop.stop(); });

  suite.SmartConfigOnlineListen(kZorAnnouncementPort);
  suite.SmartConfigV5_Start(arguments[1], arguments[2], seconds * 1000);
  while (!finder->found && loop.run_one() > 0) continue;
  suite.SmartConfigStop();
  callbacks.release();  // The descriptor is the library's, so Asio must not close it.
  return finder->found ? 0 : 1;
}
