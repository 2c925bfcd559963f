#pragma once

#include "StartWish.h"

namespace orv {

/// Whether there is a screen to open a window on: an X or Wayland display, or a platform that the environment names.
[[nodiscard]] bool hasDisplay();

/// Runs the application with its main window until the person quits it; gives the exit code. Where it runs already,
/// that one is told what this start is for. A wish for the illustrations makes these and nothing else.
///
/// With `ORV_BENCH_FIRST_FRAME` set it says on the standard output when the first frame is on the screen ("frame") and
/// when the first frame with the projects is ("content"), then ends.
int runWindow(int argc, char** argv, const StartWish& wish);

} // namespace orv
