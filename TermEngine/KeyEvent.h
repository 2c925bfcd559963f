#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace term {

/// How CSI and its like are sent: as ESC and a character, or as one byte (S7C1T, S8C1T).
enum class ControlBits : uint8_t { seven, eight };

/// A key without a character of its own. The values are the key codes of kitty's keyboard protocol; the keys that it
/// encodes by another number have the ones that it leaves free.
enum class Key : uint32_t {
    character = 0, ///< a key that has one: see KeyEvent::code
    tab = 9,
    enter = 13,
    escape = 27,
    backspace = 127,
    insert = 57348,
    deleteForward,
    left,
    right,
    up,
    down,
    pageUp,
    pageDown,
    home,
    end,
    capsLock = 57358,
    scrollLock,
    numLock,
    printScreen,
    pause,
    menu,
    f1 = 57364,
    f2,
    f3,
    f4,
    f5,
    f6,
    f7,
    f8,
    f9,
    f10,
    f11,
    f12,
    f13,
    f20 = f13 + 7,
    f35 = f13 + 22,
    keypad0,
    keypad9 = keypad0 + 9,
    keypadDecimal,
    keypadDivide,
    keypadMultiply,
    keypadSubtract,
    keypadAdd,
    keypadEnter,
    keypadEqual,
    keypadSeparator,
    keypadLeft,
    keypadRight,
    keypadUp,
    keypadDown,
    keypadPageUp,
    keypadPageDown,
    keypadHome,
    keypadEnd,
    keypadInsert,
    keypadDelete,
    keypadBegin,
    mediaPlay,
    mediaPause,
    mediaPlayPause,
    mediaReverse,
    mediaStop,
    mediaFastForward,
    mediaRewind,
    mediaTrackNext,
    mediaTrackPrevious,
    mediaRecord,
    lowerVolume,
    raiseVolume,
    muteVolume,
    leftShift,
    leftControl,
    leftAlt,
    leftSuper,
    leftHyper,
    leftMeta,
    rightShift,
    rightControl,
    rightAlt,
    rightSuper,
    rightHyper,
    rightMeta,
    isoLevel3Shift,
    isoLevel5Shift,
};

/// The bits of the modifier parameter less 1.
struct KeyModifiers {
    enum Bit : uint8_t { shift = 1, alt = 2, ctrl = 4, super = 8, hyper = 16, meta = 32, capsLock = 64, numLock = 128 };
    static constexpr uint8_t locks = capsLock | numLock;

    uint8_t bits = 0;

    [[nodiscard]] constexpr bool has(int wanted) const { return (bits & wanted) == wanted; }
    [[nodiscard]] constexpr bool hasAny(int wanted) const { return (bits & wanted) != 0; }
    [[nodiscard]] constexpr KeyModifiers without(int some) const { return {static_cast<uint8_t>(bits & ~some)}; }
    bool operator==(const KeyModifiers&) const = default;
};

enum class KeyEventType : uint8_t { press = 1, repeat = 2, release = 3 };

struct KeyEvent {
    Key key = Key::character;
    /// The key's character without any modifier in the present layout; 0 for text that comes from no key, as an input
    /// method gives it.
    char32_t code = 0;
    char32_t shifted = 0; ///< its character with shift; 0 where that is unknown
    char32_t base = 0;    ///< what the same key has on a PC-101 keyboard; 0 where that is unknown
    KeyModifiers modifiers{};
    KeyEventType type = KeyEventType::press;
    /// UTF-8, what the key writes with these modifiers, ctrl and alt apart. A modifier that was used up for it (AltGr)
    /// is not among the modifiers.
    std::string_view text = {};
};

} // namespace term
