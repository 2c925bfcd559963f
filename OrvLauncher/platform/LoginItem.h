#pragma once

#include "OrvUI/LaunchAtLogin.h"

#include <memory>

namespace orv {

/// What this desktop starts at login: on Linux an entry in the autostart folder.
[[nodiscard]] std::unique_ptr<LoginItemController> makeLoginItem();

} // namespace orv
