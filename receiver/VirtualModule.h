#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "receiver/Credentials.h"
#include "receiver/Decoder.h"

namespace zor::receiver {

/// What a virtual module does wrong, for tests of those who talk to it.
enum class Misbehaviour {
  none,
  silent,             ///< Hears and obeys, but sends nothing: no answers, no notifications.
  slowAnswers,        ///< Every answer leaves 2 s late.
  otherPort,          ///< Answers leave from an ephemeral port instead of 25000.
  lateCommandAnswer,  ///< An upgrade command is met with a status line; its own answer follows after three
                      ///< more.
  negativeStatus,     ///< Every upgrade status is -3.
  garbageLines,       ///< A datagram of random octets leaves before and after every line.
  capitals,           ///< Tags in capitals: "XCMD_RSP:", "XCMD_NOTIFY:".
};

/// What a virtual module is, and where it lives.
struct VirtualModuleOptions {
  std::string interface;                    ///< Network interface whose frames it hears, such as "eth0".
  std::optional<std::string> acceptedSsid;  ///< Empty: it joins any network that it is told of.
  std::optional<std::string> acceptedPassPhrase;  ///< Empty: it takes any pass phrase.
  std::string mac;                         ///< The mac key of its lines; empty: the interface's own address.
  std::string version = "1.0.0";           ///< The ver key.
  std::string capabilities = "0x1";        ///< The cap key.
  std::string extension = "name=virtual";  ///< Further pairs behind the cap key; may be empty.
  bool provisioned = false;  ///< True: on the network from the start; hears no frames and needs no privilege.
  std::string downloadPath;  ///< Where an upgrade's file goes; empty: its octets are counted and dropped.
  Misbehaviour misbehaviour = Misbehaviour::none;
};

/// Something that happened to a virtual module. `text` never holds control characters.
struct ModuleEvent {
  enum class Kind {
    started,           ///< Everything it needs is open; comes once, before all others.
    frames,            ///< `frames` and `progress`; at most ten times a second.
    decoded,           ///< `credentials` were decoded and accepted: the module joins.
    refused,           ///< `credentials` were decoded but are not those of its network.
    announced,         ///< The first notification went to `port`; `text` is its line.
    infoRequest,       ///< `text` is who asked, as "address:port".
    upgradeRequest,    ///< `text` is the URL, empty if `result` is negative. Comes neither for repetitions
                       ///< nor for a refusal within 2 s of another.
    downloadProgress,  ///< `percent` of the file are here.
    downloadDone,      ///< The file is whole; `text` is its path, empty when it was dropped.
    downloadFailed,    ///< `text` says why, `result` is what the status is from now on.
    sendFailed,        ///< A line could not be sent; `text` is the system's reason.
  };

  Kind kind = Kind::frames;
  std::uint64_t frames = 0;  ///< Broadcast and multicast frames heard so far.
  DecoderProgress progress;
  std::optional<Credentials> credentials;
  std::string text;
  int percent = 0;         ///< 0 to 100.
  int result = 0;          ///< The ret value of the answer: 0, or one of ModuleRequests.h.
  std::uint16_t port = 0;  ///< UDP port that was announced to.
};

/// A module in software: hears the frames on an interface as a module outside the network does, and once it
/// was told the network's credentials behaves as a module inside does.
///
/// 1. It keeps decoding after it joined: version 5 credentials, which may name a notification port, can
///    follow version 3 ones, which cannot. Credentials that it accepts make it announce itself again.
/// 2. A notification goes to the limited broadcast address five times, 200 ms apart, to the port that
///    the append bytes name (01, low octet, high octet) or to 25010.
/// 3. Once joined it answers on UDP port 25000. When the interface has an IPv4 address, its sockets are
///    bound to that interface; when it has none, the module borrows the host's addresses and routes.
/// 4. Datagrams and servers are not trusted: ModuleRequests.h and Download.h name the limits.
class VirtualModule {
 public:
  using EventHandler = std::function<void(const ModuleEvent&)>;

  /// Opens nothing yet. `onEvent` is called on the thread of run(), one call at a time, and must not
  /// block long.
  VirtualModule(VirtualModuleOptions options, EventHandler onEvent);
  ~VirtualModule();
  VirtualModule(const VirtualModule&) = delete;
  VirtualModule& operator=(const VirtualModule&) = delete;

  /// Lives until stop(); call it once. Capturing frames needs CAP_NET_RAW in the network namespace.
  /// \return empty after a stop, else one line that says why the module could not live on.
  std::string run();

  /// Makes run() return within 100 ms, at once if it is called before run(). Any thread, and signal
  /// handlers too.
  void stop();

 private:
  VirtualModuleOptions options_;
  EventHandler onEvent_;
  int stopEvent_;  ///< An eventfd, readable once the module was stopped.
};

}  // namespace zor::receiver
