#include "ZOR/platform/SystemLog.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

#if defined(__ANDROID__)
#include <android/log.h>
#elif defined(__APPLE__)
#include <os/log.h>
#else
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include "ZOR/platform/CancelLater.h"
#endif

#include "ZOR/platform/Wipe.h"

namespace zor {
namespace {

/// A line whose bytes cannot end it or steer a terminal, cut to what a message of RFC 3164 (1,024 bytes) has
/// room for after its header. Wiped, as it may hold the pass phrase.
class EscapedLine {
 public:
  explicit EscapedLine(const char* line) {
    for (; *line != '\0' && length_ < kMaxLength; ++line) append(static_cast<unsigned char>(*line));
    text_[length_] = '\0';
  }
  ~EscapedLine() { wipe(text_, sizeof text_); }
  EscapedLine(const EscapedLine&) = delete;
  EscapedLine& operator=(const EscapedLine&) = delete;

  char* text() { return text_; }
  std::size_t length() const { return length_; }

 private:
  static constexpr std::size_t kMaxLength = 992;
  static constexpr std::size_t kMaxEscape = 4;

  void append(unsigned char byte) {
    const bool control = byte < 0x20 || byte == 0x7F;
    const char* const format = control ? "\\x%02x" : byte == '\\' ? "\\\\" : "%c";
    length_ += static_cast<std::size_t>(std::snprintf(text_ + length_, kMaxEscape + 1, format, byte));
  }

  std::size_t length_ = 0;
  char text_[kMaxLength + kMaxEscape];
};

#if defined(__ANDROID__)

void send(EscapedLine& line) {
  __android_log_write(ANDROID_LOG_INFO, "ZorSuite", line.text());
}

#elif defined(__APPLE__)

void send(EscapedLine& line) {
  os_log(OS_LOG_DEFAULT, "%{public}s", line.text());
}

#else

constexpr char kDaemonPath[] = "/dev/log";

/// Sends the datagram that `syslog` would, but without a time, which daemons then take from their own clock,
/// and without a wait: a line that the daemon has no room for is lost.
void send(EscapedLine& line) {
  const CancelLater later;
  const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return;
  sockaddr_un daemon{};
  daemon.sun_family = AF_UNIX;
  std::memcpy(daemon.sun_path, kDaemonPath, sizeof kDaemonPath);
  char header[32];
  const int headerLength = std::snprintf(header, sizeof header, "<%d>ZorSuite[%d]: ", LOG_USER | LOG_INFO,
                                         static_cast<int>(getpid()));
  iovec parts[] = {{header, static_cast<std::size_t>(headerLength)}, {line.text(), line.length()}};
  msghdr message{};
  message.msg_name = &daemon;
  message.msg_namelen = sizeof daemon;
  message.msg_iov = parts;
  message.msg_iovlen = 2;
  sendmsg(descriptor, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
  close(descriptor);
}

#endif

}  // namespace

void writeToSystemLog(const char* line) {
  EscapedLine escaped(line);
  send(escaped);
}

}  // namespace zor
