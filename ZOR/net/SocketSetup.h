#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "ZOR/platform/Export.h"

/// \file
/// What the application wants done to every socket that the library opens from now on. A socket for which
/// that fails counts as one that could not be created: the call that opens it returns `kZorNoSocket`, `errno`
/// says why, and nothing is sent another way. Sockets that are open already stay as they are.

/// Binds sockets to the network interface called `name`, such as "wlan0" or "en0"; an empty name, the
/// default, leaves the choice to the system's routes. Returns false, with nothing changed, when no interface
/// has that name now, or when the system has no way to bind to one. Any thread.
///
/// What a bound socket sends leaves by that interface or fails. A default route that leads elsewhere, into a
/// VPN or to mobile data, does not matter, and none is needed. On Linux the socket also hears only what
/// arrives there, and so nothing from its own host; before Linux 5.7 binding takes CAP_NET_RAW, without which
/// no socket can be opened (EPERM).
///
/// The interface is looked up by its name for each socket. While it is gone no socket can be opened (ENODEV
/// or ENXIO); once it is back, sockets can be opened again. A socket whose interface was removed stays dead:
/// senders and searches replace it after a failed send, a listener must be started again.
ZOR_API bool ZorSetInterface(std::string_view name);

/// Does to a new socket what only the application can. Returns false to refuse it: then there is no socket,
/// and `errno` is EPERM. What it throws is dropped and refuses the socket too.
///
/// It is called once for each socket, after `ZorSetInterface` has had its effect and before the socket is
/// bound to a port, on the thread that opens it: the application's or a worker's, several at a time. The
/// datagram or the start that needs the socket waits for it. It must not close the descriptor, keep it, open
/// sockets of the library, or start a worker: the start would wait for the worker that waits for the hook.
using ZorSocketHook = std::function<bool(std::int32_t descriptor)>;

/// Makes `hook` see every new socket; an empty one restores the default, none.
///
/// On Android, where an application cannot bind to an interface, a hook binds to the Wi-Fi network:
///
///     ZorSetSocketHook([network](std::int32_t descriptor) {
///       return android_setsocknetwork(network, descriptor) == 0;
///     });
///
/// A VPN application calls `VpnService.protect`. A hook that is replaced while it is being called stays alive
/// until it has returned, and is then destroyed on the thread that called it. Without memory for the new hook
/// the present one stays. Any thread.
ZOR_API void ZorSetSocketHook(ZorSocketHook hook);
