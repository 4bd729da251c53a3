#include "ZOR/smartconfig/SenderRun.h"

#include "ZOR/facade/RunListener.h"
#include "ZOR/facade/Worker.h"
#include "ZOR/facade/WorkerState.h"

namespace zor {
namespace {

void runSender(WorkerThread& thread, const Channel& channel, SenderBody body, const SenderInputs& inputs) {
  std::int32_t status = 0;
  {
    SocketAir air(thread, channel);
    status = body(air, inputs);
    air.endRun();
  }
  if (status < 0) {
    s_ZorDevice.smartStatus = status;
    channel.counters.state = ZorWorkerState::noSocket;
    return;
  }
  channel.counters.state = endState(thread.cancelReason(), ZorWorkerState::timedOut);
}

}  // namespace

void startSender(ZorWorkerHandle& handle, const Channel& channel, SenderBody body, std::int32_t noWorker) {
  channel.counters.reset(ZorWorkerState::running);
  const bool started = Worker::start(handle, WorkerKind{channel.threadName, false, channel.counters.state},
                                     [&channel, body, inputs = copySenderInputs()](WorkerThread& thread) {
                                       runSender(thread, channel, body, inputs);
                                     });
  if (started) return;
  channel.counters.state = ZorWorkerState::noThread;
  s_ZorDevice.smartStatus = noWorker;
}

}  // namespace zor
