#pragma once

#include "OrvCore/Devices.h"

namespace orv {

/// This machine, as Flutter calls it.
#ifdef Q_OS_MACOS
inline const FlutterDevice desktopDevice{QStringLiteral("macos"), QStringLiteral("macOS")};
#else
inline const FlutterDevice desktopDevice{QStringLiteral("linux"), QStringLiteral("Linux")};
#endif

} // namespace orv
