#include "TermEngine/Terminal.h"

#include <string_view>

namespace term {

bool Terminal::dispatchEsc(std::string_view collected, char final) {
    m_buffer->forgetLastScalar();
    if (!m_modes.ansi) {
        return dispatchVt52(collected, final);
    }
    if (!collected.empty()) {
        return designate(collected, final);
    }
    switch (final) {
    case '7':
        cmdSaveCursor();
        return true;
    case '8':
        cmdRestoreCursor();
        return true;
    case 'D':
        cmdIndex();
        return true;
    case 'E':
        nextLine();
        return true;
    case 'M':
        m_buffer->reverseIndex(pen());
        return true;
    case 'H':
        m_buffer->setTabStop(m_buffer->x());
        return true;
    case '6':
        backIndex();
        return true;
    case '9':
        forwardIndex();
        return true;
    case '=':
    case '>':
        m_modes.applicationKeypad = final == '=';
        return true;
    case 'c':
        reset();
        return true;
    case 'V':
    case 'W':
        // SPA and EPA of ISO 6429: all erasing spares what is written between them, until a DECSCA.
        m_isProtected = final == 'V';
        m_isErasureGuarded = m_isErasureGuarded || final == 'V';
        m_isPenStale = true;
        return true;
    case 'Z':
        sendPrimaryAttributes();
        return true;
    case '<': // this is no VT52 anyway
    case '\\':
        return true;
    default:
        return shiftCharset(final);
    }
}

/// SS2, SS3 and the locking shifts, whose controls of 7 bits are SI and SO.
bool Terminal::shiftCharset(char final) {
    switch (final) {
    case 'N':
    case 'O':
        m_charset.single = final == 'N' ? 2 : 3;
        return true;
    case 'n':
    case 'o':
        m_charset.left = final == 'n' ? 2 : 3;
        return true;
    case '~':
    case '}':
    case '|':
        m_charset.right = final == '~' ? 1 : final == '}' ? 2 : 3;
        return true;
    default:
        return false;
    }
}

/// XTerm Control Sequences, VT52 Mode.
bool Terminal::dispatchVt52(std::string_view collected, char final) {
    Buffer& b = *m_buffer;
    if (collected.size() == 2 && collected[0] == 'Y') {
        // Origin mode is none of its own.
        const auto place = [](char code) { return static_cast<std::uint8_t>(code) - ' '; };
        b.setCursor(place(final), place(collected[1]));
        return true;
    }
    if (!collected.empty()) {
        return false;
    }
    switch (final) {
    case '<':
        setAnsi(true);
        return true;
    case '=':
    case '>':
        m_modes.applicationKeypad = final == '=';
        return true;
    case 'A':
        cmdCursorUp(1);
        return true;
    case 'B':
        cmdCursorDown(1);
        return true;
    case 'C':
        cursorForward(1);
        return true;
    case 'D':
        cursorBackward(1);
        return true;
    case 'F':
    case 'G':
        m_charset.designated[0] = final == 'F' ? Charset::vt52Graphics : Charset::ascii;
        return true;
    case 'H':
        b.setCursor(0, 0);
        return true;
    case 'I':
        b.reverseIndex(pen());
        return true;
    case 'J':
        cmdEraseInDisplay(0, EraseKind::all);
        return true;
    case 'K':
        cmdEraseInLine(0, EraseKind::all);
        return true;
    case 'Z':
        reply("\x1B/Z");
        return true;
    default:
        return false;
    }
}

/// ESC with intermediate bytes: character sets, line modes, controls of 7 or 8 bits.
bool Terminal::designate(std::string_view collected, char final) {
    if (collected == "#") {
        switch (final) {
        case '3':
            setLineMode(RenderLineMode::doubledTop);
            return true;
        case '4':
            setLineMode(RenderLineMode::doubledDown);
            return true;
        case '5':
            setLineMode(RenderLineMode::single);
            return true;
        case '6':
            setLineMode(RenderLineMode::doubleWidth);
            return true;
        case '8':
            cmdScreenAlignmentPattern();
            return true;
        default:
            return false;
        }
    }
    if (collected == " ") {
        if (final == 'F' || final == 'G') {
            m_modes.eightBitControls = final == 'G';
        }
        return (final >= 'F' && final <= 'G') || (final >= 'L' && final <= 'N');
    }
    if (collected == "%") {
        // The text is UTF-8, and stays so.
        return final == 'G' || final == '@';
    }
    const std::size_t slot = std::string_view("()*+").find(collected[0]);
    const std::size_t slot96 = std::string_view("-./").find(collected[0]);
    const bool has96 = slot96 != std::string_view::npos;
    if (slot == std::string_view::npos && !has96) {
        return false;
    }
    const std::optional<Charset> set = charsetOf(std::string(collected.substr(1)) + final, has96);
    if (set) {
        m_charset.designated[has96 ? slot96 + 1 : slot] = *set;
    }
    return set.has_value();
}

} // namespace term
