#pragma once

#include "TermEngine/KeyEvent.h"

#include <cstdint>
#include <string>

namespace term {

/// Modes 9, 1000, 1002 and 1003.
enum class MouseTracking : uint8_t { none, x10, normal, buttonEvent, anyEvent };
/// How coordinates are written: modes 1005, 1006, 1015 and 1016, or none of them.
enum class MouseEncoding : uint8_t { standard, utf8, sgr, urxvt, sgrPixels };

/// The values are the codes of reports.
enum class MouseButton : uint8_t {
    left = 0,
    middle = 1,
    right = 2,
    none = 3,
    wheelUp = 64,
    wheelDown = 65,
    wheelLeft = 66,
    wheelRight = 67,
    button8 = 128,
    button9 = 129,
    button10 = 130,
    button11 = 131,
};

enum class MouseEventType : uint8_t { press, release, motion };

struct MouseEvent {
    MouseEventType type = MouseEventType::press;
    MouseButton button = MouseButton::none; ///< of a motion: the one that is held
    int column = 0;                         ///< cells, from 0
    int row = 0;
    int x = 0; ///< pixels from the left edge of the first cell, from 0; only SGR pixels need them
    int y = 0;
    KeyModifiers modifiers{};
};

/// What `event` sends; empty when it is not asked for, or lies beyond what the encoding can tell. That a motion has
/// reached another cell (another pixel, with SGR pixels) is for the caller to see.
[[nodiscard]] std::string encodeMouse(
    const MouseEvent& event, MouseTracking tracking, MouseEncoding encoding, ControlBits controls = ControlBits::seven);

} // namespace term
