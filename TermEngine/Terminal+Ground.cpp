// What most of the bytes of most programs come to, beside the parser's loop, so that it becomes one piece.

#include "TermEngine/EscapeSequenceParser+Ground_p.h"
#include "TermEngine/Terminal.h"

#include <algorithm>

namespace term {

void Terminal::refreshPen() {
    m_isPenStale = false;
    // In this order: what a sweep frees while the new bits are made is not in them.
    m_pen.blank = m_arena->blank(m_attribute);
    m_pen.bits = std::uint64_t{m_arena->intern(m_attribute)} << PackedCell::attributeShift |
                 std::uint64_t{m_isProtected} << PackedCell::protectedShift |
                 std::uint64_t{m_link} << PackedCell::payloadShift |
                 static_cast<std::uint64_t>(m_buffer->semantic.content) << PackedCell::semanticShift;
}

void Terminal::printAscii(Bytes text) {
    if (m_charset.isPlain() && !m_options.screenReaderMode) [[likely]] {
        m_buffer->insertAsciiRun(text, pen());
    } else {
        printTranslated(text);
    }
}

void Terminal::setAttribute(PackedAttributeKey attribute) {
    if (attribute != m_attribute) {
        // As they come, word by word: to read both at once would wait until they are in the cache.
        m_attribute.word0 = attribute.word0;
        m_attribute.word1 = attribute.word1;
        m_isPenStale = true;
        m_arena->willIntern(attribute);
    }
}

bool Terminal::applyKnownRendition(const SequenceText& text) {
    const AttributePatch* const patch = m_renditions.find(text);
    if (patch == nullptr) {
        return false;
    }
    m_buffer->forgetLastScalar();
    setAttribute(patch->applied(m_attribute));
    return true;
}

/// Of the foreground, '3', or the background, '4'.
void Terminal::setColor(std::uint8_t ground, Color color) {
    // No branch on which of the two.
    const int shift = ground == '4' ? 32 : 0;
    PackedAttributeKey made = m_attribute;
    made.word0 = (made.word0 & ~(std::uint64_t{0xFFFFFFFF} << shift)) | std::uint64_t{color.raw()} << shift;
    m_buffer->forgetLastScalar();
    setAttribute(made);
}

bool Terminal::applyTrueColor(std::uint8_t ground, int red, int green, int blue) {
    setColor(ground, Color::clamped(red, green, blue));
    return true;
}

bool Terminal::applyPaletteColor(std::uint8_t ground, int index) {
    if (index > 255) {
        return false;
    }
    setColor(ground, Color::palette(static_cast<std::uint8_t>(index)));
    return true;
}

/// The functions that programs use most, without the way through the parameters.
bool Terminal::dispatchNumbers(char final, int first, int second) {
    const int count = std::max(first, 1);
    switch (final) {
    case 'H':
        cmdCursorPosition(count - 1, std::max(second, 1) - 1);
        break;
    case 'f':
        cmdHVPosition(count - 1, std::max(second, 1) - 1);
        break;
    case 'A':
        cmdCursorUp(count);
        break;
    case 'B':
        cmdCursorDown(count);
        break;
    case 'C':
        cursorForward(count);
        break;
    case 'D':
        cursorBackward(count);
        break;
    case 'G':
        cmdCursorCharAbsolute(count - 1);
        break;
    case 'd':
        cmdLinePosAbsolute(count - 1);
        break;
    case 'J':
        cmdEraseInDisplay(first, EraseKind::all);
        break;
    case 'K':
        cmdEraseInLine(first, EraseKind::all);
        break;
    case 'X':
        cmdEraseChars(count);
        break;
    case '@':
        cmdInsertChars(count);
        break;
    case 'P':
        cmdDeleteChars(count);
        break;
    case 'L':
        cmdInsertLines(count);
        break;
    case 'M':
        cmdDeleteLines(count);
        break;
    case 'r':
        cmdSetScrollRegion(first, std::max(second, 0));
        break;
    case 'm':
        if (!cmdCsiM(first, second)) {
            return false;
        }
        break;
    default:
        return false;
    }
    // What REP repeats stands right before it.
    m_buffer->forgetLastScalar();
    return true;
}

template void EscapeSequenceParser::walkGround<Terminal>(ParsingState&);

} // namespace term
