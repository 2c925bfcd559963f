#pragma once

#include "TermEngine/MouseEncoder.h"

#include <cstdint>

namespace term {

/// The modes of a terminal that are not those of a buffer (insert, wraparound, margins are).
struct TerminalModes {
    // ANSI
    bool keyboardLocked = false; ///< KAM, 2
    bool sendReceive = true;     ///< SRM, 12: no local echo
    bool newline = false;        ///< LNM, 20

    // DEC private
    bool applicationCursor = false;       ///< 1
    bool ansi = true;                     ///< 2, DECANM: not a VT52
    bool columns132 = false;              ///< 3
    bool reverseVideo = false;            ///< 5
    bool origin = false;                  ///< 6
    bool autoRepeat = true;               ///< 8
    bool cursorBlink = true;              ///< 12
    bool cursorVisible = true;            ///< 25
    bool allowsColumnMode = false;        ///< 40
    bool moreFix = false;                 ///< 41: a tab behind a full line begins the next one
    bool nationalReplacement = false;     ///< 42
    bool applicationKeypad = false;       ///< 66
    bool backarrowSendsBackspace = false; ///< 67
    bool sixelDisplay = false;            ///< 80
    bool keepsScreenOnColumnMode = false; ///< 95
    bool focusEvents = false;             ///< 1004
    bool alternateScroll = true;          ///< 1007
    bool eightBitMeta = false;            ///< 1034
    bool numLockOverridesKeypad = true;   ///< 1035
    bool metaSendsEscape = true;          ///< 1036
    bool deleteSendsDel = false;          ///< 1037
    bool altSendsEscape = true;           ///< 1039: without effect, for where alt is meta there is 1036
    bool urgentBell = false;              ///< 1042
    bool allowsAlternateScreen = true;    ///< 1046
    bool bidiArrowKeySwap = false;        ///< 1243
    bool bracketedPaste = false;          ///< 2004
    bool synchronizedOutput = false;      ///< 2026
    bool graphemeClusters = true;         ///< 2027
    bool colorSchemeUpdates = false;      ///< 2031
    bool inBandResize = false;            ///< 2048
    bool bidiBoxMirroring = false;        ///< 2500
    bool bidiAutodetection = false;       ///< 2501
    bool pasteEvents = false;             ///< 5522
    bool sixelCursorRight = false;        ///< 8452

    MouseTracking mouseTracking = MouseTracking::none;
    MouseEncoding mouseEncoding = MouseEncoding::standard;
    std::uint8_t modifyOtherKeys = 0;
    bool eightBitControls = false; ///< S8C1T
    bool programGetsShift = false; ///< XTSHIFTESCAPE: the mouse with Shift is for the program, not for selecting

    bool operator==(const TerminalModes&) const = default;
};

} // namespace term
