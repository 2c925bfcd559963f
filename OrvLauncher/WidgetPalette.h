#pragma once

#include <QPalette>

namespace orv {

/// The colours of the theme for what Qt Widgets draws: the tray's menu and the dialogs of desktops that have none.
class WidgetPalette {
public:
    [[nodiscard]] static QPalette ofTheme();
};

} // namespace orv
