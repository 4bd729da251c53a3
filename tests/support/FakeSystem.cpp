#include "tests/support/FakeSystem.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <system_error>
#include <thread>

#include "tests/support/Wait.h"

namespace {
std::atomic<FakeSystem*> current{nullptr};
}

FakeSystem::FakeSystem() {
  current = this;
}
FakeSystem::~FakeSystem() {
  current = nullptr;
}

void FakeSystem::failSendsWhen(std::function<bool(const SentDatagram&)> fails) {
  const std::lock_guard lock(mutex_);
  fails_ = std::move(fails);
}

std::vector<SentDatagram> FakeSystem::sent() const {
  const std::lock_guard lock(mutex_);
  return sent_;
}

void FakeSystem::forgetSent() {
  const std::lock_guard lock(mutex_);
  sent_.clear();
}

bool FakeSystem::waitForSends(std::size_t count, int limitMs) const {
  return waitUntil([&] { return sent().size() >= count; }, limitMs);
}

bool FakeSystem::record(const SentDatagram& datagram) {
  const std::lock_guard lock(mutex_);
  sent_.push_back(datagram);
  return !fails_ || !fails_(datagram);
}

extern "C" {

int __real_socket(int domain, int type, int protocol);
ssize_t __real_sendto(int descriptor, const void* bytes, size_t length, int flags, const sockaddr* to,
                      socklen_t size);
int __real_gettimeofday(timeval* now, void* zone);

int __wrap_socket(int domain, int type, int protocol) {
  FakeSystem* const fake = current;
  if (fake == nullptr || !fake->denySockets) return __real_socket(domain, type, protocol);
  errno = EMFILE;
  return -1;
}

ssize_t __wrap_sendto(int descriptor, const void* bytes, size_t length, int flags, const sockaddr* to,
                      socklen_t size) {
  if (FakeSystem* const fake = current; fake != nullptr) {
    const auto* address = reinterpret_cast<const sockaddr_in*>(to);
    sockaddr_in local{};
    socklen_t localSize = sizeof local;
    getsockname(descriptor, reinterpret_cast<sockaddr*>(&local), &localSize);
    char text[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &address->sin_addr, text, sizeof text);
    const bool passes =
        fake->record({std::chrono::steady_clock::now(), text, ntohs(address->sin_port),
                      std::string(static_cast<const char*>(bytes), length), ntohs(local.sin_port)});
    if (!passes) {
      errno = EPERM;
      return -1;
    }
  }
  return __real_sendto(descriptor, bytes, length, flags, to, size);
}

ssize_t __real_recvfrom(int descriptor, void* buffer, size_t length, int flags, sockaddr* from,
                        socklen_t* size);

ssize_t __wrap_recvfrom(int descriptor, void* buffer, size_t length, int flags, sockaddr* from,
                        socklen_t* size) {
  FakeSystem* const fake = current;
  if (fake != nullptr && fake->receivesToFail > 0) {
    --fake->receivesToFail;
    errno = fake->receiveError;
    return -1;
  }
  return __real_recvfrom(descriptor, buffer, length, flags, from, size);
}

int __wrap_gettimeofday(timeval* now, void* zone) {
  const int result = __real_gettimeofday(now, zone);
  FakeSystem* const fake = current;
  if (fake == nullptr) return result;
  std::int64_t us = std::int64_t{now->tv_sec} * 1'000'000 + now->tv_usec + fake->clockAheadMs * 1000;
  if (fake->frozenClockUs != 0) us = fake->frozenClockUs;
  now->tv_sec = static_cast<time_t>(us / 1'000'000);
  now->tv_usec = static_cast<suseconds_t>(us % 1'000'000);
  return result;
}

// How libstdc++ creates a thread: std::thread::_M_start_thread.
#define ZOR_START_THREAD _ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE
#define ZOR_JOIN(a, b) a##b
#define ZOR_NAME(a, b) ZOR_JOIN(a, b)

void ZOR_NAME(__real_, ZOR_START_THREAD)(void* thread, void* state, void (*depend)());

void ZOR_NAME(__wrap_, ZOR_START_THREAD)(void* thread, void* state, void (*depend)()) {
  FakeSystem* const fake = current;
  if (fake != nullptr && fake->denyThreads) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  ZOR_NAME(__real_, ZOR_START_THREAD)(thread, state, depend);
}

}  // extern "C"
