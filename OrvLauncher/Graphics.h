#pragma once

#include <QString>

namespace orv {

/// Whether some driver for drawing has a device under `devices` ("/dev"). Without one OpenGL would be computed by
/// llvmpipe, whose compiler alone costs a window 55 MB and a third of its start.
[[nodiscard]] bool hasGraphicsDevice(const QString& devices);

/// Lets Qt Quick draw by its software renderer where there is no graphics device. Whoever chose by Qt's environment
/// variables (QT_QUICK_BACKEND, QSG_RHI_BACKEND) keeps the choice. Call it before the first window is made.
void chooseGraphics();

/// Windows wait, 5 ms unless QT_QPA_UPDATE_IDLE_TIME says otherwise, before they draw what has changed: most of the
/// time between a key and its letter in a terminal. What changes often is paced where it comes from. Call it when the
/// application object is there, and no window yet.
void drawWithoutDelay();

} // namespace orv
