#include "ZOR/net/UdpSocket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

#include "ZOR/net/NewSocket.h"
#include "ZOR/net/Receive.h"
#include "ZOR/net/ReceiveWait.h"
#include "ZOR/platform/CancelLater.h"

namespace {

/// Switches one of the socket's own options on.
bool setOn(std::int32_t descriptor, int option) {
  const std::int32_t on = 1;
  return setsockopt(descriptor, SOL_SOCKET, option, &on, sizeof on) == 0;
}

/// Creates a socket that is closed on exec.
std::int32_t createSocket() {
#if defined(SOCK_CLOEXEC)
  return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
#else
  const std::int32_t descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  if (descriptor >= 0) fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  return descriptor;
#endif
}

// Apple's systems make the sockets of an application that they suspended defunct: a send on one would raise
// SIGPIPE, which ends the process. Where there is a socket option against that, it is used instead of the
// send's flag, which a system older than its headers may not know.
#if defined(SO_NOSIGPIPE)

constexpr int kSendFlags = 0;

bool silenceSignal(std::int32_t descriptor) {
  return setOn(descriptor, SO_NOSIGPIPE);
}

#else

constexpr int kSendFlags = MSG_NOSIGNAL;

bool silenceSignal(std::int32_t) {
  return true;
}

#endif

/// A new socket, closed unless it is released, even when the application's hook ends the thread. Closing
/// leaves `errno` as it is.
class NewSocket {
 public:
  NewSocket() = default;
  ~NewSocket() {
    const int reason = errno;
    ZorUdpClose(descriptor_);
    errno = reason;
  }
  NewSocket(const NewSocket&) = delete;
  NewSocket& operator=(const NewSocket&) = delete;

  /// Makes it ready for its own options and its port. The application's wishes come before both: whether a
  /// port is free depends on the interface, and a hook should see a socket that has done nothing yet.
  bool setUp() const {
    return descriptor_ >= 0 && silenceSignal(descriptor_) && zor::setUpNewSocket(descriptor_);
  }

  std::int32_t get() const { return descriptor_; }
  std::int32_t release() { return std::exchange(descriptor_, -1); }

 private:
  std::int32_t descriptor_ = createSocket();
};

sockaddr_in makeAddress(in_addr_t address, std::uint16_t port) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(port);
  result.sin_addr.s_addr = address;
  return result;
}

bool bindToAnyAddress(std::int32_t descriptor, std::uint16_t port) {
  const sockaddr_in local = makeAddress(htonl(INADDR_ANY), port);
  return bind(descriptor, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0;
}

std::int32_t openSender() {
  NewSocket socket;
  if (!socket.setUp()) return kZorNoSocket;
  if (!setOn(socket.get(), SO_BROADCAST)) return kZorOptionFailed;
  if (!bindToAnyAddress(socket.get(), 0)) return kZorSenderBindFailed;
  return socket.release();
}

/// 1 when a receive would find something, an error included; 0 after the wait; negative on failure.
std::int32_t waitUntilReadable(std::int32_t descriptor) {
  pollfd wanted{descriptor, POLLIN, 0};
  const int ready = poll(&wanted, 1, zor::kReceiveWaitMs);
  if (ready <= 0) return ready;
  if ((wanted.revents & POLLNVAL) == 0) return 1;
  errno = EBADF;
  return -1;
}

}  // namespace

std::int32_t ZorUdpInit(std::int32_t port) {
  NewSocket socket;
  if (!socket.setUp()) return kZorNoSocket;
  if (!bindToAnyAddress(socket.get(), static_cast<std::uint16_t>(port))) return kZorBindFailed;
  return socket.release();
}

std::int32_t ZorUdpMcInit() {
  return openSender();
}

std::int32_t ZorUdpBcInit() {
  return openSender();
}

void ZorUdpClose(std::int32_t descriptor) {
  const zor::CancelLater later;
  if (descriptor >= 0) close(descriptor);
}

std::int32_t ZorUdpRecvData(std::int32_t descriptor, void* buffer, std::int32_t length, char* sourceText,
                            std::uint32_t* sourcePort) {
  if (descriptor < 0) return 0;
  const std::int32_t ready = waitUntilReadable(descriptor);
  if (ready <= 0) return ready;
  return zor::receiveNow(descriptor, buffer, length, sourceText, sourcePort).length;
}

std::int32_t ZorUdpSendData(std::int32_t descriptor, const void* buffer, std::int32_t length,
                            const char* destinationText, std::uint16_t port) {
  sockaddr_in destination = makeAddress(inet_addr(destinationText), port);
  in_addr strict;
  if (inet_pton(AF_INET, destinationText, &strict) == 1) destination.sin_addr = strict;
  return static_cast<std::int32_t>(sendto(descriptor, buffer, static_cast<std::size_t>(length), kSendFlags,
                                          reinterpret_cast<const sockaddr*>(&destination),
                                          sizeof destination));
}
