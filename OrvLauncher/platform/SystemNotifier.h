#pragma once

#include "OrvUI/Notifications.h"

#include <memory>

namespace orv {

/// What this desktop shows notifications with: on Linux the server of org.freedesktop.Notifications on the session bus.
///
/// Posts and forgets: a server that is not there, that hangs or that goes costs nobody any time.
[[nodiscard]] std::unique_ptr<Notifying> makeSystemNotifier();

} // namespace orv
