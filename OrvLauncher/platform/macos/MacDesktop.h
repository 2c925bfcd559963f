#pragma once

#include "OrvUI/ModelTypes.h"

namespace orv {

/// With an icon in the Dock and a menu bar, or without both.
void setActivationPolicy(ActivationPolicy policy);

/// Has the desktop's widgets read the snapshot again.
void reloadWidgets();

} // namespace orv
