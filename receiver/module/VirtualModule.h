#pragma once

#include <optional>
#include <string>

#include "receiver/module/ModuleEvent.h"

namespace zor::receiver {

/// What a virtual module does wrong, to test the programs that talk to it.
enum class Misbehaviour {
  none,
  silent,             ///< Hears and obeys, but sends nothing: no answers, no notifications.
  slowAnswers,        ///< Every answer leaves 2 s late.
  otherPort,          ///< Answers leave from an ephemeral port instead of 25000.
  lateCommandAnswer,  ///< An upgrade command is answered with a status line; its own answer follows after
                      ///< three more.
  negativeStatus,     ///< Every upgrade status is -3.
  garbageLines,       ///< A datagram of random bytes leaves before and after every line.
  capitals,           ///< Tags in capitals: "XCMD_RSP:", "XCMD_NOTIFY:".
};

/// What a virtual module is and does, and which interface it is on.
struct VirtualModuleOptions {
  std::string interface;                    ///< Network interface whose frames it hears, such as "eth0".
  std::optional<std::string> acceptedSsid;  ///< Empty: it joins any network.
  std::optional<std::string> acceptedPassPhrase;  ///< Empty: it accepts any pass phrase.
  std::string mac;                         ///< The mac key of its lines; empty: the interface's own address.
  std::string version = "1.0.0";           ///< The ver key.
  std::string capabilities = "0x1";        ///< The cap key.
  std::string extension = "name=virtual";  ///< Further pairs after the cap key; may be empty.
  bool provisioned = false;  ///< On the network from the start: hears no frames and needs no privilege.
  std::string downloadPath;  ///< Where an upgrade's file goes; empty: it is fetched and dropped.
  Misbehaviour misbehaviour = Misbehaviour::none;
};

/// A module in software: hears the frames on an interface as a module outside the network does, and once it
/// has the network's credentials behaves as a module inside does.
///
/// 1. It keeps decoding after it has joined: version 5 credentials, which may name a notification port, can
///    follow version 3 ones, which cannot. Whenever it accepts credentials, it announces itself again.
/// 2. A notification goes to the limited broadcast address five times, 200 ms apart, to the port that the
///    append bytes name (01, low byte, high byte) or to 25010.
/// 3. Once joined it answers on UDP port 25000. If the interface has an IPv4 address, the module's sockets
///    are bound to it; if it has none, the module borrows the host's addresses and routes.
/// 4. Datagrams and servers are not trusted: ModuleRequests.h and Download.h name the limits.
class VirtualModule {
 public:
  /// Opens nothing yet. `onEvent` is called on the thread of run(), one call at a time, and must not block
  /// long.
  VirtualModule(VirtualModuleOptions options, ModuleEventHandler onEvent);
  ~VirtualModule();
  VirtualModule(const VirtualModule&) = delete;
  VirtualModule& operator=(const VirtualModule&) = delete;

  /// Runs until stop(); call it once. Capturing frames needs CAP_NET_RAW in the network namespace. Returns
  /// empty after a stop, else one line that says why the module had to end.
  std::string run();

  /// Makes run() return within 100 ms, or at once if it has not been called yet. Any thread, also in a signal
  /// handler.
  void stop();

 private:
  VirtualModuleOptions options_;
  ModuleEventHandler onEvent_;
  int stopEvent_;  ///< An eventfd, readable once the module was stopped.
};

}  // namespace zor::receiver
