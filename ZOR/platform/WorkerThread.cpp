#include "ZOR/platform/WorkerThread.h"

#include <poll.h>
#include <pthread.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <thread>
#include <utility>

#include "ZOR/platform/NeverDestroyed.h"

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

/// How long a worker waits at a time when nothing can wake it, and rests when its wait has failed,
/// milliseconds.
constexpr std::int32_t kBlindWaitMs = 10;

/// Every worker thread that there is: at most one of each kind, and those that are about to go.
struct AllThreads {
  Mutex mutex;
  WorkerThread* first ZOR_GUARDED_BY(mutex) = nullptr;
};

constinit NeverDestroyed<AllThreads> allThreads;

void runNamed(const char* name, const std::function<void()>& body) {
#if defined(__APPLE__)
  pthread_setname_np(name);
#else
  pthread_setname_np(pthread_self(), name);
#endif
  body();
}

}  // namespace

WorkerThread::WorkerThread() {
  AllThreads& all = allThreads.value;
  const MutexLock lock(all.mutex);
  next_ = all.first;
  if (next_ != nullptr) next_->previous_ = this;
  all.first = this;
}

WorkerThread::~WorkerThread() {
  AllThreads& all = allThreads.value;
  const MutexLock lock(all.mutex);
  if (next_ != nullptr) next_->previous_ = previous_;
  (previous_ != nullptr ? previous_->next_ : all.first) = next_;
}

void WorkerThread::wakeAll() {
  AllThreads& all = allThreads.value;
  const MutexLock lock(all.mutex);
  for (WorkerThread* thread = all.first; thread != nullptr; thread = thread->next_) thread->wake();
}

bool WorkerThread::start(const char* name, std::function<void()> body) {
  anchor_ = std::chrono::steady_clock::now();
  const BlockedSignals blocked;
  try {
    // Detached, because a worker ends by itself and nobody waits for its last instruction. The body
    // owns all that it uses, and what is process-wide is never destroyed.
    std::thread(runNamed, name, std::move(body)).detach();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void WorkerThread::cancel(CancelReason reason) {
  {
    const MutexLock lock(mutex_);
    if (!cancelled()) reason_.store(reason, std::memory_order_release);
    wake_.raise();
  }
  condition_.notifyAll();
}

void WorkerThread::wake() {
  {
    // Taken so that a wait either has not read its interval yet or is asleep and hears the notice.
    const MutexLock lock(mutex_);
    wake_.raise();
  }
  condition_.notifyAll();
}

void WorkerThread::openWakeDescriptor() {
  const MutexLock lock(mutex_);
  wakeEnd_ = wake_.descriptor();
}

void WorkerThread::closeWakeDescriptor() {
  const MutexLock lock(mutex_);
  wake_.close();
  wakeEnd_ = -1;
}

bool WorkerThread::waitReadable(std::int32_t descriptor, std::int32_t milliseconds) {
  pollfd waited[] = {{descriptor, POLLIN, 0}, {wakeEnd_, POLLIN, 0}};  // A negative one is ignored.
  const bool isBlind = wakeEnd_ < 0;
  if (isBlind && (milliseconds < 0 || milliseconds > kBlindWaitMs)) milliseconds = kBlindWaitMs;
  const bool noWait = poll(waited, 2, milliseconds) < 0 && errno != EINTR;
  if (waited[1].revents != 0) {
    const MutexLock lock(mutex_);
    wake_.lower();
  }
  // A descriptor that was shut down is readable for ever, though a receive finds neither datagram nor error.
  constexpr int kFailed = POLLERR | POLLHUP | POLLNVAL;
  const bool failed = ((waited[0].revents | waited[1].revents) & kFailed) != 0;
  if (noWait || failed) wait(kBlindWaitMs);
  return waited[0].revents != 0;
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
