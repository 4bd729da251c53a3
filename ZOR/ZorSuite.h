#pragma once

/// \file
/// The library's chief header: the suite, its delegate, and the exported functions and variables.

#include "ZOR/facade/SuiteInterface.h"    // IWYU pragma: export
#include "ZOR/facade/Version.h"           // IWYU pragma: export
#include "ZOR/facade/WorkerHandle.h"      // IWYU pragma: export
#include "ZOR/net/Clock.h"                // IWYU pragma: export
#include "ZOR/net/LazySenders.h"          // IWYU pragma: export
#include "ZOR/net/SocketSetup.h"          // IWYU pragma: export
#include "ZOR/net/UdpSocket.h"            // IWYU pragma: export
#include "ZOR/platform/LogSink.h"         // IWYU pragma: export
#include "ZOR/platform/MainQueue.h"       // IWYU pragma: export
#include "ZOR/protocol/LineScanners.h"    // IWYU pragma: export
#include "ZOR/smartconfig/Crc8.h"         // IWYU pragma: export
#include "ZOR/smartconfig/PacketV3.h"     // IWYU pragma: export
#include "ZOR/smartconfig/PacketV5.h"     // IWYU pragma: export
#include "ZOR/state/AnnouncementPort.h"   // IWYU pragma: export
#include "ZOR/state/DeviceState.h"        // IWYU pragma: export
#include "ZOR/state/Limits.h"             // IWYU pragma: export
#include "ZOR/state/Paces.h"              // IWYU pragma: export
#include "ZOR/state/Reports.h"            // IWYU pragma: export
#include "ZOR/state/SmartConfigStatus.h"  // IWYU pragma: export
#include "ZOR/state/Tunables.h"           // IWYU pragma: export
#include "ZOR/upgrade/UpgradeCommand.h"   // IWYU pragma: export
#include "ZOR/upgrade/UpgradeStatus.h"    // IWYU pragma: export
