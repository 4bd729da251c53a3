#include "cli/PassPhrase.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "ZOR/ZorSuite.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/HiddenLine.h"

namespace zor::cli {
namespace {

constexpr char kStandardInput[] = "-";
// One byte more than the longest pass phrase and its line end, to notice one that is too long.
constexpr std::size_t kMaxRead = kZorMaxPassPhraseLength + 3;

/// A file that is open while this lives.
class File {
 public:
  /// Does not wait for the other end of a pipe.
  explicit File(const std::string& name)
      : descriptor_(name == kStandardInput ? dup(STDIN_FILENO)
                                           : open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
  ~File() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  /// False when it could not be opened; errno says why.
  bool isOpen() const { return descriptor_ >= 0; }

  /// Waits for more and appends it to `text`. Returns whether there was more; sets `error` if it failed.
  bool readMore(std::string& text, const Interrupt& interrupt, int& error) const {
    char bytes[kMaxRead];
    pollfd wanted[] = {{descriptor_, POLLIN, 0}, {interrupt.descriptor(), POLLIN, 0}};
    ssize_t count = 0;
    do {
      while (poll(wanted, 2, -1) < 0) continue;
      if (interrupt.raised())
        throw Stopped("stopped before the pass phrase was read; nothing was sent", interrupt.exitCode());
      count = read(descriptor_, bytes, kMaxRead - text.size());
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    error = count < 0 ? errno : 0;
    if (count > 0) text.append(bytes, static_cast<std::size_t>(count));
    return count > 0;
  }

 private:
  int descriptor_;
};

[[noreturn]] void refuse(const std::string& name, const std::string& why) {
  throw WrongUse("--pass-file: '" + printable(name) + "' " + why);
}

/// The beginning of the file, all of it if it is short enough.
std::string readStart(const std::string& name, const Interrupt& interrupt) {
  const File file(name);
  int error = file.isOpen() ? 0 : errno;
  std::string text;
  while (error == 0 && text.size() < kMaxRead && file.readMore(text, interrupt, error)) continue;
  if (error != 0) {
    refuse(name, std::string("cannot be read: ") + std::strerror(error) +
                     "; give a file that holds the pass phrase");
  }
  return text;
}

}  // namespace

std::string askPassPhrase(std::string_view ssid, const Interrupt& interrupt) {
  if (isatty(STDIN_FILENO) != 1) {
    throw WrongUse(
        "there is no terminal to ask for the pass phrase on: give --pass or --pass-file (--pass '' for an "
        "open network)");
  }
  return askHidden("Pass phrase of \"" + printable(ssid) + "\" (empty for an open network): ", interrupt);
}

std::string readPassPhraseFile(const std::string& name, const Interrupt& interrupt) {
  const bool isTyped = name == kStandardInput && isatty(STDIN_FILENO) == 1;
  std::string text = isTyped ? askHidden("Pass phrase: ", interrupt) : readStart(name, interrupt);
  if (text.ends_with('\n')) text.pop_back();
  if (text.ends_with('\r')) text.pop_back();
  if (text.empty()) refuse(name, "holds no pass phrase: use --pass '' for an open network");
  if (text.find('\n') != std::string::npos || text.find('\0') != std::string::npos)
    refuse(name, "holds more than a pass phrase: leave one line in it");
  if (text.size() > kZorMaxPassPhraseLength) {
    refuse(name, "holds more than " + std::to_string(kZorMaxPassPhraseLength) +
                     " bytes: give a shorter pass phrase");
  }
  return text;
}

std::string passPhraseWarning(std::string_view passPhrase) {
  constexpr std::size_t kMinLength = 8;  // These limits are those of IEEE 802.11, annex J.4.
  constexpr std::size_t kMaxLength = 63;
  constexpr std::size_t kKeyDigits = 64;  // A key of 256 bits.
  const bool isKey = passPhrase.size() == kKeyDigits &&
                     passPhrase.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
  const bool isPhrase = passPhrase.size() >= kMinLength && passPhrase.size() <= kMaxLength;
  if (passPhrase.empty() || isPhrase || isKey) return {};
  return "no WPA network has a pass phrase of " + std::to_string(passPhrase.size()) +
         " bytes: they have 8 to 63, or 64 hexadecimal digits; it is sent as it is";
}

}  // namespace zor::cli
