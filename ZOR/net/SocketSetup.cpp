#include "ZOR/net/SocketSetup.h"

#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <memory>
#include <new>
#include <utility>

#include "ZOR/net/NewSocket.h"
#include "ZOR/platform/DropExceptions.h"
#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/NeverDestroyed.h"

namespace zor {
namespace {

/// NUL-terminated; empty for no interface.
using InterfaceName = std::array<char, IF_NAMESIZE>;

/// What the application wants of every new socket.
struct SocketSetup {
  InterfaceName interface {};
  std::shared_ptr<const ZorSocketHook> hook;
};

class SetupSlot {
 public:
  SocketSetup get() ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return setup_;
  }

  void setInterface(const InterfaceName& name) ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    setup_.interface = name;
  }

  /// Leaves the old hook in `hook`, so that it is destroyed outside the lock.
  void swapHook(std::shared_ptr<const ZorSocketHook>& hook) ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    setup_.hook.swap(hook);
  }

 private:
  Mutex mutex_;
  SocketSetup setup_ ZOR_GUARDED_BY(mutex_);
};

constinit NeverDestroyed<SetupSlot> setupSlot;

#if defined(SO_BINDTODEVICE)

constexpr bool kCanBindToInterface = true;

/// This is enough for unicasts, broadcasts and multicasts, without any route too: when the interface is
/// given, Linux takes an address that no route by it leads to for a neighbour's, and ignores IP_MULTICAST_IF.
bool bindToInterface(std::int32_t descriptor, const InterfaceName& name) {
  return setsockopt(descriptor, SOL_SOCKET, SO_BINDTODEVICE, name.data(), sizeof name) == 0;
}

#elif defined(IP_BOUND_IF)

constexpr bool kCanBindToInterface = true;

/// Multicasts follow an option of their own.
bool bindToInterface(std::int32_t descriptor, const InterfaceName& name) {
  const unsigned index = if_nametoindex(name.data());
  return index != 0 && setsockopt(descriptor, IPPROTO_IP, IP_BOUND_IF, &index, sizeof index) == 0 &&
         setsockopt(descriptor, IPPROTO_IP, IP_MULTICAST_IFINDEX, &index, sizeof index) == 0;
}

#else

constexpr bool kCanBindToInterface = false;

bool bindToInterface(std::int32_t, const InterfaceName&) {
  return false;
}

#endif

/// False for what is too long or holds a character that no interface's name has. The system would find an
/// interface by some such texts: it reads "eth0:1" as "eth0".
bool mayBeAName(std::string_view text) {
  return text.size() < IF_NAMESIZE &&
         text.find_first_of(std::string_view("\0:", 2)) == std::string_view::npos;
}

bool accepts(const ZorSocketHook& hook, std::int32_t descriptor) {
  bool accepted = false;  // What throws refuses.
  callAndDropExceptions([&] { accepted = hook(descriptor); });
  if (!accepted) errno = EPERM;
  return accepted;
}

}  // namespace

bool setUpNewSocket(std::int32_t descriptor) {
  const SocketSetup setup = setupSlot.value.get();
  // By name each time: an interface that went and came back has another index.
  if (setup.interface[0] != '\0' && !bindToInterface(descriptor, setup.interface)) return false;
  return !setup.hook || accepts(*setup.hook, descriptor);
}

}  // namespace zor

bool ZorSetInterface(std::string_view name) {
  zor::InterfaceName text{};
  if (!name.empty()) {
    if (!zor::kCanBindToInterface || !zor::mayBeAName(name)) return false;
    name.copy(text.data(), name.size());
    if (if_nametoindex(text.data()) == 0) return false;
  }
  zor::setupSlot.value.setInterface(text);
  return true;
}

void ZorSetSocketHook(ZorSocketHook hook) {
  std::shared_ptr<const ZorSocketHook> next;
  try {
    if (hook) next = std::make_shared<const ZorSocketHook>(std::move(hook));
  } catch (const std::bad_alloc&) {
    return;  // Without memory the present hook stays.
  }
  zor::setupSlot.value.swapHook(next);
}
