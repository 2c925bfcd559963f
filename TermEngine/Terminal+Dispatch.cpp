#include "TermEngine/Terminal.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace term {

bool Terminal::execute(std::uint8_t code) {
    m_buffer->forgetLastScalar();
    switch (code) {
    case 0x00:
    case 0x05: // ENQ: what programs set is never answered
    case 0x11:
    case 0x13:
    case 0x18:
    case 0x1A:
        return true;
    case 0x07:
        m_delegate.bell(*this);
        return true;
    case 0x08:
        backspace();
        return true;
    case 0x09:
        if (m_modes.moreFix && m_buffer->pendingWrap() && m_buffer->wraparound) {
            nextLine();
        }
        tab(1);
        return true;
    case 0x0A:
    case 0x0B:
    case 0x0C:
        lineFeed();
        return true;
    case 0x0D:
        carriageReturn();
        return true;
    case 0x0E:
    case 0x0F:
        m_charset.left = code == 0x0E ? 1 : 0;
        return true;
    default:
        // The C1 controls of 8 bits are the ESC functions of 7.
        return code >= 0x80 && code < 0xA0 && dispatchEsc({}, static_cast<char>(code - 0x40));
    }
}

bool Terminal::dispatchCsi(char final, const CsiParameters& parameters, std::string_view collected) {
    if (final == 'b' && collected.empty()) {
        cmdRepeatPrecedingCharacter(parameters.atLeastOne(0));
        return true;
    }
    // What REP repeats stands right before it.
    m_buffer->forgetLastScalar();
    if (collected.empty()) [[likely]] {
        if (final == 'm') {
            cmdCsiM(parameters);
            return true;
        }
        return dispatchPlainCsi(final, parameters);
    }
    if (final == 'c') {
        cmdSendDeviceAttributes(collected, parameters);
        return true;
    }
    if (collected == "?") {
        return dispatchPrivateCsi(final, parameters);
    }
    if (collected.size() == 1 && collected[0] >= '<' && collected[0] <= '?') {
        return dispatchMarkedCsi(collected[0], final, parameters);
    }
    return dispatchIntermediateCsi(collected, final, parameters);
}

bool Terminal::dispatchPlainCsi(char final, const CsiParameters& parameters) {
    return moveCursor(final, parameters) || changeCells(final, parameters) || dispatchOtherCsi(final, parameters);
}

bool Terminal::moveCursor(char final, const CsiParameters& parameters) {
    const int count = parameters.atLeastOne(0);
    switch (final) {
    case 'H':
        cmdCursorPosition(count - 1, parameters.atLeastOne(1) - 1);
        return true;
    case 'f':
        cmdHVPosition(count - 1, parameters.atLeastOne(1) - 1);
        return true;
    case 'A':
        cmdCursorUp(count);
        return true;
    case 'B':
        cmdCursorDown(count);
        return true;
    case 'C':
        cursorForward(count);
        return true;
    case 'a':
        cmdHPositionRelative(count);
        return true;
    case 'D':
        cursorBackward(count);
        return true;
    case 'E':
        cmdCursorDown(count);
        m_buffer->setX(m_buffer->marginLeft());
        return true;
    case 'F':
        cmdCursorUp(count);
        m_buffer->setX(m_buffer->marginLeft());
        return true;
    case 'G':
        cmdCursorCharAbsolute(count - 1);
        return true;
    case '`':
        cmdCharPosAbsolute(count - 1);
        return true;
    case 'd':
        cmdLinePosAbsolute(count - 1);
        return true;
    case 'e':
        cmdVPositionRelative(count);
        return true;
    case 'I':
        tab(count);
        return true;
    case 'Z':
        backTab(count);
        return true;
    default:
        return false;
    }
}

bool Terminal::changeCells(char final, const CsiParameters& parameters) {
    const int count = parameters.atLeastOne(0);
    switch (final) {
    case 'K':
        cmdEraseInLine(parameters.at(0), EraseKind::all);
        return true;
    case 'J':
        cmdEraseInDisplay(parameters.at(0), EraseKind::all);
        return true;
    case '@':
        cmdInsertChars(count);
        return true;
    case 'P':
        cmdDeleteChars(count);
        return true;
    case 'X':
        cmdEraseChars(count);
        return true;
    case 'L':
        cmdInsertLines(count);
        return true;
    case 'M':
        cmdDeleteLines(count);
        return true;
    case 'S':
        cmdScrollUp(count);
        return true;
    case 'T':
        // With five parameters it is the tracking of highlights.
        if (parameters.count != 5) {
            cmdScrollDown(count);
        }
        return true;
    case '^':
        cmdScrollDown(count);
        return true;
    default:
        return false;
    }
}

bool Terminal::dispatchOtherCsi(char final, const CsiParameters& parameters) {
    const int first = parameters.at(0);
    switch (final) {
    case 'g':
        cmdTabClear(first);
        return true;
    case 'h':
        cmdSetMode(ModeKind::ansi, parameters);
        return true;
    case 'l':
        cmdResetMode(ModeKind::ansi, parameters);
        return true;
    case 'r':
        cmdSetScrollRegion(first, parameters.at(1));
        return true;
    case 's':
        if (m_buffer->marginMode) {
            cmdSetMargins(parameters);
        } else {
            cmdSaveCursor();
        }
        return true;
    case 'u':
        cmdRestoreCursor();
        return true;
    case 'c':
        cmdSendDeviceAttributes({}, parameters);
        return true;
    case 'n':
        cmdDeviceStatus(parameters);
        return true;
    case 't':
        cmdWindowOptions(parameters);
        return true;
    case 'x':
        // DECREQTPARM: no parity, eight bits, 38,400 baud.
        if (first <= 1) {
            sendCsi(std::to_string(first + 2) + ";1;1;128;128;1;0x");
        }
        return true;
    case 'q': // DECLL: there are no lamps
    case 'i': // MC: there is no printer
        return true;
    default:
        return false;
    }
}

bool Terminal::dispatchPrivateCsi(char final, const CsiParameters& parameters) {
    switch (final) {
    case 'h':
        cmdSetMode(ModeKind::decPrivate, parameters);
        return true;
    case 'l':
        cmdResetMode(ModeKind::decPrivate, parameters);
        return true;
    case 'J':
        cmdEraseInDisplay(parameters.at(0), EraseKind::unprotected);
        return true;
    case 'K':
        cmdEraseInLine(parameters.at(0), EraseKind::unprotected);
        return true;
    case 'n':
        privateDeviceStatus(parameters);
        return true;
    case 's':
        cmdSavePrivateModes(parameters);
        return true;
    case 'r':
        restorePrivateModes(parameters);
        return true;
    case 'u':
        handleKittyKeyboardProtocol('?', parameters);
        return true;
    case 'S':
        reportGraphics(parameters);
        return true;
    case 'm':
        reportKeyModifiers(parameters.at(0));
        return true;
    case 'W':
        // DECST8C
        if (parameters.at(0) == 5) {
            m_buffer->setupTabStops(8);
        }
        return true;
    case 'i':
        return true;
    default:
        return false;
    }
}

/// With one of '<', '=' and '>'.
bool Terminal::dispatchMarkedCsi(char marker, char final, const CsiParameters& parameters) {
    if (final == 'u') {
        handleKittyKeyboardProtocol(marker, parameters);
        return true;
    }
    if (marker != '>') {
        return false;
    }
    switch (final) {
    case 'q':
        if (parameters.at(0) == 0) {
            cmdXTVERSION();
        }
        return true;
    case 't':
    case 'T':
        titleModes(parameters, final == 't');
        return true;
    case 'm':
    case 'n':
        // XTMODKEYS: of the resources only modifyOtherKeys changes what is sent.
        if (parameters.at(0) == 4 || (final == 'm' && parameters.count == 1 && parameters.at(0) == 0)) {
            m_modes.modifyOtherKeys = static_cast<std::uint8_t>(final == 'm' ? std::clamp(parameters.at(1), 0, 3) : 0);
        }
        return true;
    case 's':
        // XTSHIFTESCAPE
        if (parameters.at(0) <= 1) {
            m_modes.programGetsShift = parameters.at(0) == 1;
        }
        return true;
    case 'p': // XTSMPOINTER
        return true;
    default:
        return false;
    }
}

bool Terminal::dispatchIntermediateCsi(std::string_view collected, char final, const CsiParameters& parameters) {
    switch (final) {
    case 'p':
        return csiPHandler(collected, parameters);
    case 'x':
        return csiX(collected, parameters);
    case 'z':
        return csiZ(collected, parameters);
    case '{':
        return csiOpenBrace(collected, parameters);
    case '}':
        return csiCloseBrace(collected, parameters);
    default:
        break;
    }
    const int first = parameters.at(0);
    const int count = parameters.atLeastOne(0);
    const std::string function = std::string(collected) + final;
    if (function == " q") {
        cmdSetCursorStyle(first);
    } else if (function == "\"q") {
        m_isProtected = first == 1;
        m_isErasureGuarded = false;
        m_isPenStale = true;
    } else if (function == " @" || function == " A") {
        shiftColumns(final == '@' ? count : -count);
    } else if (function == "'~") {
        cmdDeleteColumns(count);
    } else if (function == "$v") {
        csiCopyRectangularArea(parameters);
    } else if (function == "$r" || function == "$t") {
        changeAttributes(parameters, final == 't');
    } else if (function == "*y") {
        cmdDECRQCRA(parameters);
    } else if (function == "#q") {
        popSgr();
    } else if (function == "*|") {
        if (first > 0 && m_delegate.allowsResize(*this, cols(), first)) {
            resize(cols(), first);
        }
    } else if (function == "$|") {
        const int wanted = first == 0 ? 80 : first;
        if (m_delegate.allowsResize(*this, wanted, rows())) {
            resize(wanted, rows());
        }
    } else if (function == " k" && first <= 2) {
        cmdSelectCharacterPath(first == 2 ? BidiDirection::rightToLeft : BidiDirection::leftToRight);
    } else if (function == " S" && (first == 0 || first == 3)) {
        // Of the directions of SPD, those with horizontal lines from top to bottom.
        cmdSelectPresentationDirection(first == 3 ? BidiDirection::rightToLeft : BidiDirection::leftToRight);
    } else {
        return dispatchStateCsi(function, parameters);
    }
    return true;
}

/// What of the state is asked for, kept and brought back.
bool Terminal::dispatchStateCsi(std::string_view function, const CsiParameters& parameters) {
    if (function == "$w") {
        reportPresentationState(parameters.at(0));
    } else if (function == "#|") {
        reportRendition(parameters);
    } else if (function == "#P") {
        pushColors(parameters);
    } else if (function == "#Q") {
        popColors(parameters);
    } else if (function == "#R") {
        reportColors();
    } else if (function == "\"v") {
        // DECRQDE: all of the one page is seen.
        sendCsi(std::to_string(rows()) + ";" + std::to_string(cols()) + ";1;1;1\"w");
    } else {
        // What is not there: bells with a volume, a locator, a status line.
        static constexpr std::array<std::string_view, 5> absent = {" t", " u", "'w", "'|", "$~"};
        return std::ranges::find(absent, function) != absent.end();
    }
    return true;
}

/// DECRQM, DECSTR, DECSCL, XTPUSHSGR.
bool Terminal::csiPHandler(std::string_view collected, const CsiParameters& parameters) {
    if (collected == "$" || collected == "?$") {
        reportMode(parameters.at(0), collected[0] == '?');
    } else if (collected == "!") {
        softReset();
    } else if (collected == "\"") {
        setConformanceLevel(parameters);
    } else if (collected == "#") {
        pushSgr(parameters);
    } else {
        return false;
    }
    return true;
}

/// DECFRA, DECSACE.
bool Terminal::csiX(std::string_view collected, const CsiParameters& parameters) {
    if (collected == "$") {
        fillRectangle(parameters);
    } else if (collected == "*") {
        m_changesRectangles = parameters.at(0) == 2;
    } else {
        return false;
    }
    return true;
}

/// DECERA; there is no locator for DECELR.
bool Terminal::csiZ(std::string_view collected, const CsiParameters& parameters) {
    if (collected == "$") {
        eraseRectangle(parameters, EraseKind::all);
        return true;
    }
    return collected == "'";
}

/// DECSERA, XTPUSHSGR; there is no locator for DECSLE.
bool Terminal::csiOpenBrace(std::string_view collected, const CsiParameters& parameters) {
    if (collected == "$") {
        eraseRectangle(parameters, EraseKind::unprotected);
    } else if (collected == "#") {
        pushSgr(parameters);
    } else {
        return collected == "'";
    }
    return true;
}

/// DECIC, XTPOPSGR; there is no status line for DECSASD.
bool Terminal::csiCloseBrace(std::string_view collected, const CsiParameters& parameters) {
    if (collected == "'") {
        insertColumns(parameters.atLeastOne(0));
    } else if (collected == "#") {
        popSgr();
    } else {
        return collected == "$";
    }
    return true;
}

void Terminal::handleKittyKeyboardProtocol(char marker, const CsiParameters& parameters) {
    const int first = parameters.at(0);
    switch (marker) {
    case '?':
        sendCsi("?" + std::to_string(keyboard().current().bits) + "u");
        break;
    case '>':
        keyboard().push(first);
        break;
    case '<':
        keyboard().pop(parameters.atLeastOne(0));
        break;
    default:
        keyboard().set(first, parameters.atLeastOne(1));
        break;
    }
}

} // namespace term
