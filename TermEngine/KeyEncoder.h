#pragma once

#include "TermEngine/KeyEvent.h"
#include "TermEngine/KittyKeyboardStack.h"

#include <string>

namespace term {

/// The modes of a terminal that decide what a key sends.
struct KeyModes {
    bool applicationCursorKeys = false;   ///< DECCKM, mode 1
    bool applicationKeypad = false;       ///< DECKPAM, mode 66
    bool numLockOverridesKeypad = true;   ///< mode 1035: with Num Lock, keypad keys send their text in any case
    bool backarrowSendsBackspace = false; ///< DECBKM, mode 67
    bool enterSendsLineFeed = false;      ///< LNM, mode 20: CR LF
    bool altSendsEscape = true;           ///< mode 1036; else alt does nothing, or see eightBitMeta
    bool eightBitMeta = false;            ///< mode 1034: alt sets the eighth bit of an ASCII character, as UTF-8
    bool deleteSendsDel = false;          ///< mode 1037
    bool eightBitControls = false;        ///< S8C1T: CSI and SS3 are one byte
    bool vt52 = false;                    ///< mode 2 is off: ESC A, ESC ? p
    uint8_t modifyOtherKeys = 0;          ///< 0 to 3 (xterm(1), modifyOtherKeys); 3: also without modifiers
    KittyKeyboardFlags kitty{};
};

/// What `event` sends to the child; empty when it sends nothing. (XTerm Control Sequences, "PC-Style Function Keys" and
/// "Alt and Meta Keys"; kitty's keyboard protocol.)
[[nodiscard]] std::string encodeKey(const KeyEvent& event, const KeyModes& modes);

} // namespace term
