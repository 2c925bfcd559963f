#include "OrvTerminal/View/KeyTranslator.h"

#include <QKeyEvent>

#include <algorithm>
#include <array>
#include <string_view>

namespace orv {
namespace {

struct NamedKey {
    int qt;
    term::Key key;
    term::Key keypad; ///< the same on the keypad; `character` where it is none
};

using enum term::Key;

constexpr std::array namedKeys{
    NamedKey{Qt::Key_Tab, tab, character},
    NamedKey{Qt::Key_Backtab, tab, character},
    NamedKey{Qt::Key_Return, enter, character},
    NamedKey{Qt::Key_Enter, keypadEnter, keypadEnter},
    NamedKey{Qt::Key_Escape, escape, character},
    NamedKey{Qt::Key_Backspace, backspace, character},
    NamedKey{Qt::Key_Insert, insert, keypadInsert},
    NamedKey{Qt::Key_Delete, deleteForward, keypadDelete},
    NamedKey{Qt::Key_Left, left, keypadLeft},
    NamedKey{Qt::Key_Right, right, keypadRight},
    NamedKey{Qt::Key_Up, up, keypadUp},
    NamedKey{Qt::Key_Down, down, keypadDown},
    NamedKey{Qt::Key_PageUp, pageUp, keypadPageUp},
    NamedKey{Qt::Key_PageDown, pageDown, keypadPageDown},
    NamedKey{Qt::Key_Home, home, keypadHome},
    NamedKey{Qt::Key_End, end, keypadEnd},
    NamedKey{Qt::Key_Clear, keypadBegin, keypadBegin},
    NamedKey{Qt::Key_CapsLock, capsLock, character},
    NamedKey{Qt::Key_ScrollLock, scrollLock, character},
    NamedKey{Qt::Key_NumLock, numLock, numLock},
    NamedKey{Qt::Key_Print, printScreen, character},
    NamedKey{Qt::Key_SysReq, printScreen, character},
    NamedKey{Qt::Key_Pause, pause, character},
    NamedKey{Qt::Key_Menu, menu, character},
    NamedKey{Qt::Key_Shift, leftShift, character},
    NamedKey{Qt::Key_Control, leftControl, character},
    NamedKey{Qt::Key_Alt, leftAlt, character},
    NamedKey{Qt::Key_Meta, leftSuper, character},
    NamedKey{Qt::Key_Super_L, leftSuper, character},
    NamedKey{Qt::Key_Super_R, rightSuper, character},
    NamedKey{Qt::Key_Hyper_L, leftHyper, character},
    NamedKey{Qt::Key_Hyper_R, rightHyper, character},
    NamedKey{Qt::Key_AltGr, isoLevel3Shift, character},
    NamedKey{Qt::Key_MediaPlay, mediaPlay, character},
    NamedKey{Qt::Key_MediaPause, mediaPause, character},
    NamedKey{Qt::Key_MediaTogglePlayPause, mediaPlayPause, character},
    NamedKey{Qt::Key_MediaStop, mediaStop, character},
    NamedKey{Qt::Key_MediaNext, mediaTrackNext, character},
    NamedKey{Qt::Key_MediaPrevious, mediaTrackPrevious, character},
    NamedKey{Qt::Key_MediaRecord, mediaRecord, character},
    NamedKey{Qt::Key_VolumeDown, lowerVolume, character},
    NamedKey{Qt::Key_VolumeUp, raiseVolume, character},
    NamedKey{Qt::Key_VolumeMute, muteVolume, character},
};

constexpr std::array keypadCharacters{
    NamedKey{Qt::Key_Period, character, keypadDecimal}, NamedKey{Qt::Key_Comma, character, keypadSeparator},
    NamedKey{Qt::Key_Slash, character, keypadDivide},   NamedKey{Qt::Key_Asterisk, character, keypadMultiply},
    NamedKey{Qt::Key_Minus, character, keypadSubtract}, NamedKey{Qt::Key_Plus, character, keypadAdd},
    NamedKey{Qt::Key_Equal, character, keypadEqual},
};

template <size_t count>
const NamedKey* find(const std::array<NamedKey, count>& keys, int key) {
    const auto* found = std::ranges::find(keys, key, &NamedKey::qt);
    return found == keys.end() ? nullptr : found;
}

constexpr term::Key after(term::Key first, int by) {
    return static_cast<term::Key>(static_cast<std::uint32_t>(first) + static_cast<std::uint32_t>(by));
}

/// The keys without a character of their own; `character` for all others.
term::Key namedKey(int key, bool isKeypad) {
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35) {
        return key <= Qt::Key_F12 ? after(f1, key - Qt::Key_F1) : after(f13, key - Qt::Key_F13);
    }
    if (isKeypad && key >= Qt::Key_0 && key <= Qt::Key_9) {
        return after(keypad0, key - Qt::Key_0);
    }
    if (const NamedKey* keypad = isKeypad ? find(keypadCharacters, key) : nullptr) {
        return keypad->keypad;
    }
    const NamedKey* named = find(namedKeys, key);
    if (named == nullptr) {
        return character;
    }
    return isKeypad && named->keypad != character ? named->keypad : named->key;
}

#ifndef Q_OS_MACOS
/// The characters of a PC-101 keyboard, by the codes of Linux's input events, without and with shift.
struct KeyRow {
    quint32 firstCode;
    std::string_view plain;
    std::string_view shifted;
};
constexpr std::array keyRows{
    KeyRow{2, "1234567890-=", "!@#$%^&*()_+"},
    KeyRow{16, "qwertyuiop[]", "QWERTYUIOP{}"},
    KeyRow{30, "asdfghjkl;'`", "ASDFGHJKL:\"~"},
    KeyRow{43, "\\zxcvbnm,./", "|ZXCVBNM<>?"},
    KeyRow{57, " ", " "},
};
constexpr quint32 x11Offset = 8; ///< what X11 adds to the codes
#endif

struct BaseKey {
    char32_t plain = 0;
    char32_t shifted = 0;
};

BaseKey baseKey([[maybe_unused]] quint32 scanCode) {
#ifndef Q_OS_MACOS
    for (const KeyRow& row : keyRows) {
        const quint32 at = scanCode - x11Offset - row.firstCode;
        if (scanCode >= x11Offset + row.firstCode && at < row.plain.size()) {
            return {static_cast<char32_t>(row.plain[at]), static_cast<char32_t>(row.shifted[at])};
        }
    }
#endif
    return {};
}

/// The character of Qt's key codes: Unicode in upper case.
char32_t characterOf(int key) {
    return key >= Qt::Key_Space && key < 0x01000000 ? QChar::toLower(static_cast<char32_t>(key)) : 0;
}

/// What the key means in the layout of the moment, as the platform names it: of X11 and Wayland the symbol, which ctrl
/// and alt do not change. macOS names the place.
quint32 symbolOf([[maybe_unused]] const QKeyEvent& event) {
#ifdef Q_OS_MACOS
    return 0;
#else
    return event.nativeVirtualKey();
#endif
}

} // namespace

term::KeyModifiers KeyTranslator::modifiersOf(Qt::KeyboardModifiers modifiers) {
    struct Pair {
        Qt::KeyboardModifier qt;
        int bit;
    };
#ifdef Q_OS_MACOS
    // Qt exchanges the two there.
    constexpr int ctrlBit = term::KeyModifiers::super;
    constexpr int metaBit = term::KeyModifiers::ctrl;
#else
    constexpr int ctrlBit = term::KeyModifiers::ctrl;
    constexpr int metaBit = term::KeyModifiers::super;
#endif
    int bits = 0;
    for (const Pair pair :
         {Pair{Qt::ShiftModifier, term::KeyModifiers::shift}, Pair{Qt::AltModifier, term::KeyModifiers::alt},
          Pair{Qt::ControlModifier, ctrlBit}, Pair{Qt::MetaModifier, metaBit}}) {
        bits |= modifiers.testFlag(pair.qt) ? pair.bit : 0;
    }
    return {static_cast<std::uint8_t>(bits)};
}

char32_t KeyTranslator::plainOf(const QKeyEvent& event, const QString& written) {
    const quint32 scanCode = event.nativeScanCode();
    const char32_t first = written.isEmpty() ? 0 : written.toUcs4().constFirst();
    const bool isPrintable = first > U' ' && first != 0x7F;
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    if (modifiers == Qt::NoModifier && isPrintable && scanCode != 0) {
        m_plain.insert(scanCode, {QChar::toLower(first), symbolOf(event)});
    }
    const char32_t named = characterOf(event.key());
    // With shift only a capital says what the key is without.
    const char32_t shown = isPrintable ? first : static_cast<char32_t>(event.key());
    const bool isSaid = named != 0 && (!modifiers.testFlag(Qt::ShiftModifier) || QChar::toLower(shown) != shown);
    if (const auto known = m_plain.constFind(scanCode); known != m_plain.constEnd()) {
        const bool isSameKey = known->symbol != 0 && known->symbol == symbolOf(event);
        if (!isSaid || isSameKey || known->character == named) {
            return known->character;
        }
    }
    const BaseKey base = baseKey(scanCode);
    const bool agrees = base.plain != 0 && (named == base.plain || named == QChar::toLower(base.shifted));
    if (agrees) {
        return base.plain;
    }
    return named != 0 ? named : isPrintable ? QChar::toLower(first) : 0;
}

bool KeyTranslator::translate(const QKeyEvent& event, term::KeyEvent& made, QByteArray& text) {
    if (event.key() == Qt::Key_unknown && event.text().isEmpty()) {
        return false;
    }
    made.modifiers = modifiersOf(event.modifiers());
    // Nobody says whether Num Lock is on, but only then are these the keypad's.
    const bool isDigit = event.key() >= Qt::Key_0 && event.key() <= Qt::Key_9;
    const bool isPoint = event.key() == Qt::Key_Period || event.key() == Qt::Key_Comma;
    if (event.modifiers().testFlag(Qt::KeypadModifier) && (isDigit || isPoint)) {
        made.modifiers.bits |= term::KeyModifiers::numLock;
    }
    made.type = event.type() == QEvent::KeyRelease ? term::KeyEventType::release
                : event.isAutoRepeat()             ? term::KeyEventType::repeat
                                                   : term::KeyEventType::press;
    made.key = namedKey(event.key(), event.modifiers().testFlag(Qt::KeypadModifier));
    const QString written = event.text();
    const bool isText = !written.isEmpty() && written.at(0).unicode() >= 0x20 && written.at(0).unicode() != 0x7F;
    text = isText ? written.toUtf8() : QByteArray();
    made.text = std::string_view(text.constData(), static_cast<size_t>(text.size()));
    if (made.key != character) {
        return true;
    }
    made.code = plainOf(event, written);
    made.base = baseKey(event.nativeScanCode()).plain;
    if (made.code == 0 && text.isEmpty()) {
        return false;
    }
    if (made.modifiers.has(term::KeyModifiers::shift)) {
        const char32_t named = isText
                                   ? written.toUcs4().constFirst()
                                   : (event.key() >= Qt::Key_A && event.key() <= Qt::Key_Z ? char32_t(event.key())
                                                                                           : characterOf(event.key()));
        made.shifted = named == made.code ? 0 : named;
    }
    return true;
}

} // namespace orv
