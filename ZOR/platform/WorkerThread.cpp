#include "ZOR/platform/WorkerThread.h"

#include <csignal>
#include <exception>
#include <thread>
#include <utility>

namespace zor {
namespace {

/// Blocks the signals that others send for the calling thread, and so for threads that it creates, in
/// one scope. What a thread's own fault raises stays deliverable, for whoever reports crashes.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT})
      sigdelset(&blocked, fault);
    pthread_sigmask(SIG_BLOCK, &blocked, &previous_);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace

bool WorkerThread::start(std::function<void()> body) {
  anchor_ = std::chrono::steady_clock::now();
  const BlockedSignals blocked;
  try {
    // Detached, because a worker ends by itself and nobody waits for its last instruction. The body
    // owns all that it uses, and what is process-wide is never destroyed.
    std::thread(std::move(body)).detach();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void WorkerThread::cancel() {
  {
    const MutexLock lock(mutex_);
    cancelled_.store(true, std::memory_order_release);
  }
  condition_.notifyAll();
}

void WorkerThread::wake() {
  {
    // Taken so that a wait either has not read its interval yet or is asleep and hears the notice.
    const MutexLock lock(mutex_);
  }
  condition_.notifyAll();
}

void WorkerThread::wait(std::int32_t milliseconds) {
  wait(std::atomic<std::int32_t>(milliseconds));
}

void WorkerThread::wait(const std::atomic<std::int32_t>& interval) {
  if (interval.load() <= 0) return;
  const MutexLock lock(mutex_);
  Instant now = std::chrono::steady_clock::now();
  if (now >= anchor_ + std::chrono::milliseconds(interval.load())) anchor_ = now;

  Instant deadline = anchor_;
  const std::int32_t lengthAtStart = interval.load();
  std::int32_t length = lengthAtStart;
  while (!cancelled() && length > 0) {
    deadline = anchor_ + std::chrono::milliseconds(length);
    if (now >= deadline) break;
    condition_.waitUntil(mutex_, deadline);
    now = std::chrono::steady_clock::now();
    length = interval.load();
  }
  // A wait cut short by a change of its length is over now, not at a deadline in the past.
  anchor_ = length == lengthAtStart ? deadline : now;
}

}  // namespace zor
