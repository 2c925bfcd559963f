#include "OrvTerminal/View/KeyTranslator.h"

#include <QKeyEvent>
#ifndef Q_OS_MACOS
#include <xkbcommon/xkbcommon.h>
#endif

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

/// A modifier whose keys stand on both sides.
struct PairedModifier {
    int bit;
    Qt::KeyboardModifier qt;
    int qtKey;
    term::Key left;
    term::Key right;
};
#ifdef Q_OS_MACOS
constexpr bool exchangesCtrlAndMeta = true;
#else
constexpr bool exchangesCtrlAndMeta = false;
#endif
constexpr int qtOfCtrl = exchangesCtrlAndMeta ? Qt::Key_Meta : Qt::Key_Control;
constexpr int qtOfSuper = exchangesCtrlAndMeta ? Qt::Key_Control : Qt::Key_Meta;
constexpr std::array pairedModifiers{
    PairedModifier{term::KeyModifiers::shift, Qt::ShiftModifier, Qt::Key_Shift, leftShift, rightShift},
    PairedModifier{term::KeyModifiers::alt, Qt::AltModifier, Qt::Key_Alt, leftAlt, rightAlt},
    PairedModifier{
        term::KeyModifiers::ctrl, exchangesCtrlAndMeta ? Qt::MetaModifier : Qt::ControlModifier, qtOfCtrl, leftControl,
        rightControl},
    PairedModifier{
        term::KeyModifiers::super, exchangesCtrlAndMeta ? Qt::ControlModifier : Qt::MetaModifier, qtOfSuper, leftSuper,
        rightSuper},
};

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
    NamedKey{qtOfCtrl, leftControl, character},
    NamedKey{Qt::Key_Alt, leftAlt, character},
    NamedKey{qtOfSuper, leftSuper, character},
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

#ifndef Q_OS_MACOS
/// Both of X11 and of Wayland, which number keys and modifiers alike (xkbcommon-keysyms.h). With shift a keyboard's Alt
/// is called Meta; a key that is Meta alone has not been built for long.
struct SideKey {
    quint32 symbol;
    term::Key key;
};
constexpr std::array sideKeys{
    SideKey{0xFFE1, leftShift},      SideKey{0xFFE2, rightShift},     SideKey{0xFFE3, leftControl},
    SideKey{0xFFE4, rightControl},   SideKey{0xFFE7, leftAlt},        SideKey{0xFFE8, rightAlt},
    SideKey{0xFFE9, leftAlt},        SideKey{0xFFEA, rightAlt},       SideKey{0xFFEB, leftSuper},
    SideKey{0xFFEC, rightSuper},     SideKey{0xFFED, leftHyper},      SideKey{0xFFEE, rightHyper},
    SideKey{0xFE03, isoLevel3Shift}, SideKey{0xFE11, isoLevel5Shift},
};
#endif

/// Qt does not tell the left one of a pair from the right one.
term::Key sideOf([[maybe_unused]] quint32 symbol, term::Key key) {
#ifndef Q_OS_MACOS
    const auto* found = std::ranges::find(sideKeys, symbol, &SideKey::symbol);
    return found == sideKeys.end() ? key : found->key;
#else
    return key;
#endif
}

/// The lock keys that are on; Qt has no word for them.
int locksOf(quint32 nativeModifiers) {
#ifdef Q_OS_MACOS
    constexpr quint32 capsLockMask = 1U << 16U; // NSEventModifierFlagCapsLock
    constexpr quint32 numLockMask = 0;
#else
    constexpr quint32 capsLockMask = 1U << 1U; // Lock
    constexpr quint32 numLockMask = 1U << 4U;  // Mod2
#endif
    return ((nativeModifiers & capsLockMask) != 0 ? term::KeyModifiers::capsLock : 0) |
           ((nativeModifiers & numLockMask) != 0 ? term::KeyModifiers::numLock : 0);
}

/// In the events of a modifier's own key Qt turns that modifier over.
Qt::KeyboardModifiers modifiersBefore(const QKeyEvent& event) {
    const auto* own = std::ranges::find(pairedModifiers, event.key(), &PairedModifier::qtKey);
    return own == pairedModifiers.end() ? event.modifiers() : event.modifiers() ^ own->qt;
}

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

/// A letter beyond ASCII that the platform names, in either case; 0: none. Where ctrl is held, Qt puts the Latin key in
/// its place.
char32_t letterOf([[maybe_unused]] const QKeyEvent& event) {
#ifdef Q_OS_MACOS
    return 0;
#else
    const char32_t named = xkb_keysym_to_utf32(event.nativeVirtualKey());
    return named > 0x7F && QChar::isLetter(named) ? named : 0;
#endif
}

} // namespace

term::KeyModifiers KeyTranslator::modifiersOf(Qt::KeyboardModifiers modifiers) {
    int bits = 0;
    for (const PairedModifier& pair : pairedModifiers) {
        bits |= modifiers.testFlag(pair.qt) ? pair.bit : 0;
    }
    return {static_cast<std::uint8_t>(bits)};
}

/// A modifier counts as held from the press of its own key on, and until neither key of the pair is down.
void KeyTranslator::countHeld(term::KeyEvent& made) {
    const auto* pair = std::ranges::find_if(pairedModifiers, [&made](const PairedModifier& each) {
        return made.key == each.left || made.key == each.right;
    });
    if (pair == pairedModifiers.end()) {
        return;
    }
    const term::Key other = made.key == pair->left ? pair->right : pair->left;
    if (made.type == term::KeyEventType::press && !made.modifiers.has(pair->bit)) {
        m_held.erase(other); // let go of while another window had the keyboard
    }
    if (made.type == term::KeyEventType::release) {
        m_held.erase(made.key);
    } else {
        m_held.insert(made.key);
    }
    const bool isOn = made.type != term::KeyEventType::release || m_held.contains(other);
    made.modifiers = {static_cast<std::uint8_t>(made.modifiers.without(pair->bit).bits | (isOn ? pair->bit : 0))};
}

char32_t KeyTranslator::plainOf(const QKeyEvent& event, const QString& written) {
    const quint32 scanCode = event.nativeScanCode();
    const char32_t first = written.isEmpty() ? 0 : written.toUcs4().constFirst();
    const bool isPrintable = first > U' ' && first != 0x7F;
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool isPlain =
        modifiers == Qt::NoModifier && (locksOf(event.nativeModifiers()) & term::KeyModifiers::capsLock) == 0;
    if (isPlain && isPrintable && scanCode != 0) {
        m_plain.insert(scanCode, {QChar::toLower(first), symbolOf(event)});
    }
    // With shift only a capital says what the key is without.
    if (const char32_t letter = letterOf(event);
        letter != 0 && (!modifiers.testFlag(Qt::ShiftModifier) || QChar::toLower(letter) != letter)) {
        return QChar::toLower(letter);
    }
    const char32_t named = characterOf(event.key());
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
    made.modifiers = modifiersOf(modifiersBefore(event));
    made.modifiers.bits |= static_cast<std::uint8_t>(locksOf(event.nativeModifiers()));
    // Where the platform does not say whether Num Lock is on: without shift, only then are these the keypad's.
    const bool isDigit = event.key() >= Qt::Key_0 && event.key() <= Qt::Key_9;
    const bool isPoint = event.key() == Qt::Key_Period || event.key() == Qt::Key_Comma;
    if (event.modifiers().testFlag(Qt::KeypadModifier) && !event.modifiers().testFlag(Qt::ShiftModifier) &&
        (isDigit || isPoint)) {
        made.modifiers.bits |= term::KeyModifiers::numLock;
    }
    made.type = event.type() == QEvent::KeyRelease ? term::KeyEventType::release
                : event.isAutoRepeat()             ? term::KeyEventType::repeat
                                                   : term::KeyEventType::press;
    made.key = sideOf(event.nativeVirtualKey(), namedKey(event.key(), event.modifiers().testFlag(Qt::KeypadModifier)));
    countHeld(made);
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
        const char32_t letter = letterOf(event);
        const char32_t named = letter != 0 ? QChar::toUpper(letter)
                               : isText
                                   ? written.toUcs4().constFirst()
                                   : (event.key() >= Qt::Key_A && event.key() <= Qt::Key_Z ? char32_t(event.key())
                                                                                           : characterOf(event.key()));
        // With Caps Lock, shift writes the small letter, and is still what makes the capital.
        const bool isSmall = made.modifiers.has(term::KeyModifiers::capsLock) && named == made.code;
        const char32_t shifted = isSmall ? QChar::toUpper(named) : named;
        made.shifted = shifted == made.code ? 0 : shifted;
    }
    return true;
}

} // namespace orv
