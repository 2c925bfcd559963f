#include "TermEngine/KeyEncoder.h"

#include "TermEngine/Encoding_p.h"

#include <algorithm>
#include <array>
#include <optional>

namespace term {
namespace {

using enum Key;

/// Where SS3 stands for CSI: nowhere, in application cursor mode, or always, and only without modifiers.
enum class Introducer : uint8_t { csi, ss3InCursorMode, ss3 };

/// A key that sends CSI number ; modifiers final. The number is left out where it is 1 and nothing follows.
struct FunctionKey {
    Key key;
    uint16_t number;
    char final;
    Introducer introducer = Introducer::csi;
};

constexpr std::array functionKeys{
    FunctionKey{up, 1, 'A', Introducer::ss3InCursorMode},
    FunctionKey{down, 1, 'B', Introducer::ss3InCursorMode},
    FunctionKey{right, 1, 'C', Introducer::ss3InCursorMode},
    FunctionKey{left, 1, 'D', Introducer::ss3InCursorMode},
    FunctionKey{keypadBegin, 1, 'E', Introducer::ss3InCursorMode},
    FunctionKey{end, 1, 'F', Introducer::ss3InCursorMode},
    FunctionKey{home, 1, 'H', Introducer::ss3InCursorMode},
    FunctionKey{f1, 1, 'P', Introducer::ss3},
    FunctionKey{f2, 1, 'Q', Introducer::ss3},
    FunctionKey{f3, 1, 'R', Introducer::ss3},
    FunctionKey{f4, 1, 'S', Introducer::ss3},
    FunctionKey{insert, 2, '~'},
    FunctionKey{deleteForward, 3, '~'},
    FunctionKey{pageUp, 5, '~'},
    FunctionKey{pageDown, 6, '~'},
    FunctionKey{f5, 15, '~'},
    FunctionKey{f6, 17, '~'},
    FunctionKey{f7, 18, '~'},
    FunctionKey{f8, 19, '~'},
    FunctionKey{f9, 20, '~'},
    FunctionKey{f10, 21, '~'},
    FunctionKey{f11, 23, '~'},
    FunctionKey{f12, 24, '~'},
};

/// The VT220's further keys, F13 to F20, which the kitty protocol numbers itself.
constexpr std::array<uint16_t, 8> vt220Numbers{25, 26, 28, 29, 31, 32, 33, 34};

struct KeypadKey {
    Key key;
    char text;        ///< 0 for a key that moves
    char application; ///< the final after SS3; 0 where it has none
    Key plain;        ///< the key beside the keypad that does the same
};

constexpr std::array keypadKeys{
    KeypadKey{keypadDecimal, '.', 'n', character},
    KeypadKey{keypadDivide, '/', 'o', character},
    KeypadKey{keypadMultiply, '*', 'j', character},
    KeypadKey{keypadSubtract, '-', 'm', character},
    KeypadKey{keypadAdd, '+', 'k', character},
    KeypadKey{keypadEnter, 0, 'M', enter},
    KeypadKey{keypadEqual, '=', 'X', character},
    KeypadKey{keypadSeparator, ',', 'l', character},
    KeypadKey{keypadLeft, 0, 0, left},
    KeypadKey{keypadRight, 0, 0, right},
    KeypadKey{keypadUp, 0, 0, up},
    KeypadKey{keypadDown, 0, 0, down},
    KeypadKey{keypadPageUp, 0, 0, pageUp},
    KeypadKey{keypadPageDown, 0, 0, pageDown},
    KeypadKey{keypadHome, 0, 0, home},
    KeypadKey{keypadEnd, 0, 0, end},
    KeypadKey{keypadInsert, 0, 0, insert},
    KeypadKey{keypadDelete, 0, 0, deleteForward},
};

/// What ctrl makes of a character (kitty's keyboard protocol, "Legacy ctrl mapping of ASCII keys", and of those above
/// the capitals what xterm does); 0xFF where it makes nothing.
constexpr uint8_t noControl = 0xFF;
constexpr auto controls = [] {
    std::array<uint8_t, 128> table{};
    table.fill(noControl);
    for (uint8_t letter = 'a'; letter <= 'z'; ++letter) {
        table[letter] = letter & 0x1FU;
        table[letter - 0x20U] = letter & 0x1FU;
    }
    struct Entry {
        char key;
        uint8_t control;
    };
    for (const Entry entry : {Entry{' ', 0}, {'@', 0},   {'`', 0},  {'2', 0},  {'3', 27}, {'[', 27},  {'{', 27},
                              {'4', 28},     {'\\', 28}, {'|', 28}, {'5', 29}, {']', 29}, {'}', 29},  {'6', 30},
                              {'^', 30},     {'~', 30},  {'7', 31}, {'/', 31}, {'_', 31}, {'8', 127}, {'?', 127}}) {
        table[static_cast<uint8_t>(entry.key)] = entry.control;
    }
    return table;
}();

constexpr int otherThanShift =
    KeyModifiers::alt | KeyModifiers::ctrl | KeyModifiers::super | KeyModifiers::hyper | KeyModifiers::meta;

template <size_t count>
const FunctionKey* find(const std::array<FunctionKey, count>& table, Key key) {
    const auto* found = std::ranges::find(table, key, &FunctionKey::key);
    return found == table.end() ? nullptr : found;
}

bool isKeypad(Key key) {
    return key >= keypad0 && key <= keypadBegin;
}
bool isModifier(Key key) {
    return (key >= leftShift && key <= isoLevel5Shift) || key == capsLock || key == numLock || key == scrollLock;
}
bool isFunctional(Key key) {
    return key != character && key != tab && key != enter && key != backspace && key != escape;
}

std::optional<KeypadKey> keypadKey(Key key) {
    if (key >= keypad0 && key <= keypad9) {
        const auto digit = static_cast<char>(static_cast<uint32_t>(key) - static_cast<uint32_t>(keypad0));
        return KeypadKey{key, static_cast<char>('0' + digit), static_cast<char>('p' + digit), character};
    }
    const auto* found = std::ranges::find(keypadKeys, key, &KeypadKey::key);
    return found == keypadKeys.end() ? std::nullopt : std::optional(*found);
}

class KeyEncoder {
public:
    KeyEncoder(const KeyEvent& event, const KeyModes& modes) : m_event(event), m_modes(modes) {}

    std::string encode() {
        if (m_modes.kitty.bits == 0 || m_modes.vt52) {
            if (m_event.type != KeyEventType::release) {
                encodeLegacy(m_event.key);
            }
        } else if (!encodeKitty()) {
            encodeLegacy(m_event.key);
        }
        return std::move(m_out);
    }

private:
    void csi() { m_out += m_modes.eightBitControls ? std::string_view("\x9b") : std::string_view("\x1b["); }
    void ss3() { m_out += m_modes.eightBitControls ? std::string_view("\x8f") : std::string_view("\x1bO"); }
    [[nodiscard]] bool has(int modifier) const { return m_event.modifiers.hasAny(modifier); }
    [[nodiscard]] bool wants(KittyKeyboardFlags::Bit flag) const { return m_modes.kitty.has(flag); }

    // The old way.

    void encodeLegacy(Key key) {
        const bool isOverridden = has(KeyModifiers::numLock) && m_modes.numLockOverridesKeypad;
        if (const auto keypad = keypadKey(key)) {
            if (m_modes.applicationKeypad && keypad->application != 0 && !isOverridden) {
                m_modes.vt52 ? static_cast<void>(m_out += "\x1b?") : ss3();
                m_out.push_back(keypad->application);
            } else if (keypad->text != 0) {
                // Modifiers change nothing in it, and ctrl makes no control of a digit.
                m_out.push_back(keypad->text);
            } else {
                encodeLegacy(keypad->plain);
            }
            return;
        }
        if (key == deleteForward && m_modes.deleteSendsDel && !m_event.modifiers.hasAny(~KeyModifiers::locks)) {
            m_out.push_back('\x7f');
        } else if (const FunctionKey* function = find(functionKeys, key)) {
            encodeFunction(*function, m_event.modifiers.without(KeyModifiers::locks));
        } else if (key == menu) {
            encodeFunction({menu, 29, '~'}, m_event.modifiers.without(KeyModifiers::locks));
        } else if (key >= f13 && key <= f20) {
            const size_t index = static_cast<uint32_t>(key) - static_cast<uint32_t>(f13);
            encodeFunction({key, vt220Numbers[index], '~'}, m_event.modifiers.without(KeyModifiers::locks));
        } else if (key == character) {
            encodeLegacyText(m_event.code, m_event.text);
        } else if (!isFunctional(key)) {
            encodeLegacyControl(key);
        }
    }

    void encodeFunction(const FunctionKey& function, KeyModifiers modifiers) {
        if (m_modes.vt52) {
            // It has no modifiers, and of the keys that it does not have those with a number are the usual ones.
            modifiers = {};
            if (function.number == 1) {
                m_out += {'\x1b', function.final};
                return;
            }
        }
        const bool isPlain = modifiers.bits == 0;
        const bool isSs3 = function.introducer == Introducer::ss3 ||
                           (function.introducer == Introducer::ss3InCursorMode && m_modes.applicationCursorKeys);
        if (isPlain && isSs3) {
            ss3();
        } else {
            csi();
            if (function.number != 1 || !isPlain) {
                appendNumber(m_out, function.number);
            }
            if (!isPlain) {
                m_out.push_back(';');
                appendNumber(m_out, modifiers.bits + 1);
            }
        }
        m_out.push_back(function.final);
    }

    /// CSI 27 ; modifiers ; code ~
    void encodeOther(char32_t code) {
        csi();
        m_out += "27;";
        appendNumber(m_out, m_event.modifiers.without(KeyModifiers::locks).bits + 1);
        m_out.push_back(';');
        appendNumber(m_out, static_cast<uint32_t>(code));
        m_out.push_back('~');
    }

    /// Tab, Enter, Backspace and Escape.
    void encodeLegacyControl(Key key) {
        const bool hasShift = has(KeyModifiers::shift);
        const bool hasCtrl = has(KeyModifiers::ctrl);
        const bool hasAlt = has(KeyModifiers::alt | KeyModifiers::meta);
        const bool isModified = hasShift || hasCtrl || hasAlt;
        const bool hasOnlyCtrl = hasCtrl && !hasShift && !hasAlt;
        const bool hasOnlyShift = hasShift && !hasCtrl && !hasAlt;
        const bool isWellKnown = key == backspace || key == escape || (key == tab && hasShift);
        const bool isAlwaysKnown = (key == backspace && hasOnlyCtrl) || (key == tab && hasOnlyShift);
        const char32_t code = key != backspace                             ? static_cast<char32_t>(key)
                              : m_modes.backarrowSendsBackspace != hasCtrl ? U'\b'
                                                                           : U'\x7f';
        if (m_modes.modifyOtherKeys == 3 || (isModified && ((m_modes.modifyOtherKeys == 2 && !isAlwaysKnown) ||
                                                            (m_modes.modifyOtherKeys == 1 && !isWellKnown)))) {
            encodeOther(code);
            return;
        }
        if (key == tab && hasShift) {
            if (hasAlt && m_modes.altSendsEscape) {
                m_out.push_back('\x1b');
            }
            csi();
            m_out.push_back('Z');
        } else {
            appendWithAlt(code);
            if (key == enter && m_modes.enterSendsLineFeed) {
                m_out.push_back('\n');
            }
        }
    }

    /// The character that shift makes of the key's own.
    [[nodiscard]] char32_t shiftedCode(char32_t code, std::string_view text) const {
        if (!has(KeyModifiers::shift)) {
            return code;
        }
        if (m_event.shifted != 0) {
            return m_event.shifted;
        }
        const char32_t written = text.empty() ? 0 : takeUtf8(text);
        if (written >= 0x20 && written != 0x7F && text.empty()) {
            return written;
        }
        return code >= 'a' && code <= 'z' ? code - 0x20 : code;
    }

    /// Of the characters that shift alone makes, xterm encodes those of which ctrl makes controls, and the blank.
    [[nodiscard]] bool encodesShifted(char32_t written) const {
        return m_modes.modifyOtherKeys == 2 && m_modes.kitty.bits == 0 && has(KeyModifiers::shift) &&
               (written == U' ' || (written >= U'@' && written < U'\x7f'));
    }

    void encodeLegacyText(char32_t code, std::string_view text) {
        const char32_t shifted = shiftedCode(code, text);
        const bool isEncoded = m_modes.modifyOtherKeys == 3 && m_event.key == character;
        if (code == 0 || (!has(otherThanShift) && !isEncoded)) {
            const char32_t written = text.empty() ? shifted : text.size() == 1 ? static_cast<uint8_t>(text[0]) : 0;
            if (code != 0 && encodesShifted(written)) {
                encodeOther(written);
            } else {
                text.empty() ? appendUtf8(m_out, shifted) : static_cast<void>(m_out += text);
            }
            return;
        }
        uint8_t control = noControl;
        if (has(KeyModifiers::ctrl)) {
            control = shifted < controls.size() ? controls[shifted] : noControl;
            // A layout of another script has the same controls on the same keys.
            const bool isForeign = control == noControl && code >= controls.size();
            control = isForeign && m_event.base < controls.size() ? controls[m_event.base] : control;
        }
        // DEL is what the program asked to tell from what deletes.
        const bool isOther = has(KeyModifiers::ctrl) && (control == noControl || shifted == U'?');
        if (m_modes.modifyOtherKeys >= 2 || (m_modes.modifyOtherKeys == 1 && isOther)) {
            encodeOther(shifted);
            return;
        }
        appendWithAlt(control != noControl ? control : shifted);
    }

    /// Of the two ways of alt, xterm takes the escape where it may.
    void appendWithAlt(char32_t code) {
        const bool hasAlt = has(KeyModifiers::alt | KeyModifiers::meta);
        if (hasAlt && m_modes.altSendsEscape) {
            m_out.push_back('\x1b');
        } else if (hasAlt && m_modes.eightBitMeta && code < 0x80) {
            code |= 0x80U;
        }
        appendUtf8(m_out, code);
    }

    // The kitty protocol. False: as the old way has it.

    bool encodeKitty() {
        const Key key = m_event.key;
        const bool isRelease = m_event.type == KeyEventType::release;
        const bool reportsAll = wants(KittyKeyboardFlags::reportAllKeys);
        const bool disambiguates = wants(KittyKeyboardFlags::disambiguate) || reportsAll;
        if ((isRelease && !wants(KittyKeyboardFlags::reportEvents)) || (isModifier(key) && !reportsAll)) {
            return true;
        }
        if (isFunctional(key)) {
            encodeKittyFunction(disambiguates);
            return true;
        }
        const KeyModifiers modifiers = reportsAll ? m_event.modifiers : m_event.modifiers.without(KeyModifiers::locks);
        const bool isPlain = key == character ? !modifiers.hasAny(otherThanShift) : modifiers.bits == 0;
        const bool keepsItsBytes =
            key != escape && isPlain; // so that "reset" can be typed when all else has gone wrong
        if (!reportsAll && (keepsItsBytes || !disambiguates)) {
            return isRelease; // those bytes can't tell of a release
        }
        if (key == character && m_event.code == 0 && !wants(KittyKeyboardFlags::reportText)) {
            return isRelease;
        }
        encodeKittyNumber(key == character ? m_event.code : static_cast<char32_t>(key), modifiers);
        return true;
    }

    void encodeKittyFunction(bool disambiguates) {
        Key key = m_event.key;
        if (isKeypad(key) && !disambiguates) {
            const auto keypad = keypadKey(key);
            if (keypad && (keypad->text != 0 || !isFunctional(keypad->plain))) {
                if (m_event.type != KeyEventType::release) {
                    encodeLegacy(key);
                }
                return;
            }
            key = keypad ? keypad->plain : key;
        }
        const FunctionKey* function = find(functionKeys, key);
        if (function == nullptr) {
            encodeKittyNumber(static_cast<char32_t>(key), m_event.modifiers);
            return;
        }
        // CSI R is also the answer to a question for the cursor's position.
        const bool isF3 = key == f3;
        csi();
        const bool hasField = hasModifierField(m_event.modifiers);
        if (isF3 || function->number != 1 || hasField) {
            appendNumber(m_out, isF3 ? 13 : function->number);
        }
        appendModifierField(m_event.modifiers, hasField);
        m_out.push_back(isF3 ? '~' : function->final);
    }

    [[nodiscard]] bool reportsType() const {
        return wants(KittyKeyboardFlags::reportEvents) && m_event.type != KeyEventType::press;
    }
    [[nodiscard]] bool hasModifierField(KeyModifiers modifiers) const { return modifiers.bits != 0 || reportsType(); }

    void appendModifierField(KeyModifiers modifiers, bool hasField) {
        if (hasField) {
            m_out.push_back(';');
            appendNumber(m_out, modifiers.bits + 1);
        }
        if (reportsType()) {
            m_out.push_back(':');
            appendNumber(m_out, static_cast<int>(m_event.type));
        }
    }

    /// CSI code:shifted:base ; modifiers:type ; text u
    void encodeKittyNumber(char32_t code, KeyModifiers modifiers) {
        csi();
        appendNumber(m_out, static_cast<uint32_t>(code));
        if (m_event.key == character && wants(KittyKeyboardFlags::reportAlternates)) {
            const bool hasShifted = has(KeyModifiers::shift) && m_event.shifted != 0 && m_event.shifted != code;
            const bool hasBase = m_event.base != 0 && m_event.base != code;
            if (hasShifted || hasBase) {
                m_out.push_back(':');
            }
            if (hasShifted) {
                appendNumber(m_out, static_cast<uint32_t>(m_event.shifted));
            }
            if (hasBase) {
                m_out.push_back(':');
                appendNumber(m_out, static_cast<uint32_t>(m_event.base));
            }
        }
        std::string text;
        if (wants(KittyKeyboardFlags::reportText) && wants(KittyKeyboardFlags::reportAllKeys) &&
            m_event.type != KeyEventType::release) {
            for (std::string_view rest = m_event.text; !rest.empty();) {
                const char32_t scalar = takeUtf8(rest);
                if (scalar >= 0x20 && (scalar < 0x7F || scalar >= 0xA0)) {
                    text += text.empty() ? ";" : ":";
                    appendNumber(text, static_cast<uint32_t>(scalar));
                }
            }
        }
        const bool hasField = hasModifierField(modifiers);
        appendModifierField(modifiers, hasField);
        if (!text.empty() && !hasField) {
            m_out.push_back(';');
        }
        m_out += text;
        m_out.push_back('u');
    }

    const KeyEvent& m_event;
    const KeyModes& m_modes;
    std::string m_out;
};

} // namespace

std::string encodeKey(const KeyEvent& event, const KeyModes& modes) {
    return KeyEncoder(event, modes).encode();
}

} // namespace term
