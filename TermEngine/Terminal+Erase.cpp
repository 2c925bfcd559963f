#include "TermEngine/Terminal.h"

#include <algorithm>

namespace term {
namespace {

/// DECALN.
RectangleMemory::Filling alignmentPattern(const Buffer& buffer) {
    return {{0, buffer.cols()}, PackedCell::make(PackedCell::Kind::scalar, 'E')};
}

} // namespace

void Terminal::eraseCells(int row, int first, int end, EraseKind kind) {
    loseTextImages({row, first, row + 1, end});
    eraseText(row, first, end, m_isErasureGuarded ? EraseKind::unprotected : kind);
}

void Terminal::eraseText(int row, int first, int end, EraseKind kind) {
    if (kind == EraseKind::unprotected) {
        const RectangleMemory::Filling filling{{first, end}, pen().blank};
        BufferLine& line = m_buffer->line(row);
        if (m_rectangles.isFilled(line, alignmentPattern(*m_buffer))) {
            line.fill(first, end, pen().blank);
        } else if (!m_rectangles.isFilled(line, filling)) {
            m_buffer->eraseUnprotected(row, first, end, pen().blank);
            m_rectangles.noteFilled(row, line, filling);
        }
    } else {
        m_buffer->eraseCells(row, first, end, pen().blank);
    }
}

/// A line that is erased whole loses the marks of its shell. That of the cursor keeps them, unless all is erased:
/// shells mark a line and then clear it for their prompt.
void Terminal::cmdEraseInDisplay(int what, EraseKind kind) {
    Buffer& b = *m_buffer;
    if (what == 3) {
        // DECSED too, with what is protected, as in xterm.
        if (b.hasScrollback()) {
            b.clearHistory();
        }
        return;
    }
    if (what < 0 || what > 3) {
        return;
    }
    const int first = what == 0 ? b.y() + 1 : 0;
    const int end = what == 1 ? b.y() : b.rows();
    loseTextImages({first, 0, end, b.cols()});
    if (kind == EraseKind::all && !m_isErasureGuarded) [[likely]] {
        const PackedCell blank = pen().blank;
        for (int row = first; row < end; ++row) {
            b.line(row).clear(blank);
        }
        // Nothing flows over any more.
        if (first < end && end < b.rows()) {
            b.line(end).setWrapped(false);
        }
    } else {
        for (int row = first; row < end; ++row) {
            eraseText(row, 0, b.cols(), EraseKind::unprotected);
            if (kind == EraseKind::all) {
                b.line(row).setRenderMode(RenderLineMode::single);
                b.line(row).forgetPrompt();
            }
        }
    }
    if (what != 2) {
        eraseCells(b.y(), what == 0 ? b.x() : 0, what == 1 ? b.x() + 1 : b.cols(), kind);
    } else if (kind == EraseKind::all) {
        clearImages(isAlternateActive() ? ScreenId::alternate : ScreenId::normal);
    }
    b.setPendingWrap(false);
}

void Terminal::cmdEraseInLine(int what, EraseKind kind) {
    Buffer& b = *m_buffer;
    if (what < 0 || what > 2) {
        return;
    }
    if (what == 0 && kind == EraseKind::all && !m_isErasureGuarded && !m_images.hasText()) [[likely]] {
        // What programs do most. zsh goes on in a line and erases it before it writes there: both are still one.
        b.line(b.y()).fillRest(b.x(), pen().blank);
        if (b.y() + 1 < b.rows()) {
            b.line(b.y() + 1).setWrapped(false);
        }
        b.setPendingWrap(false);
        return;
    }
    const bool continues = what == 0 && b.line(b.y()).isWrapped();
    eraseCells(b.y(), what == 0 ? b.x() : 0, what == 1 ? b.x() + 1 : b.cols(), kind);
    if (continues) {
        b.line(b.y()).setWrapped(true);
    }
    b.setPendingWrap(false);
}

void Terminal::cmdEraseChars(int count) {
    Buffer& b = *m_buffer;
    eraseCells(b.y(), b.x(), std::min(b.x() + count, b.cols()), EraseKind::all);
    b.setPendingWrap(false);
}

void Terminal::cmdInsertChars(int count) {
    Buffer& b = *m_buffer;
    b.setPendingWrap(false);
    if (b.x() >= b.marginLeft() && b.x() <= b.marginRight()) {
        moveTextImages(b.y(), b.y() + 1, b.x(), count);
        b.line(b.y()).insertPackedCells(b.x(), count, b.marginRight() + 1, pen().blank);
    }
}

void Terminal::cmdDeleteChars(int count) {
    Buffer& b = *m_buffer;
    b.setPendingWrap(false);
    if (b.x() >= b.marginLeft() && b.x() <= b.marginRight()) {
        moveTextImages(b.y(), b.y() + 1, b.x(), -count);
        b.line(b.y()).deleteCells(b.x(), count, b.marginRight() + 1, pen().blank);
    }
}

void Terminal::insertColumns(int count) {
    if (m_buffer->isInsideMargins()) {
        moveTextImages(m_buffer->scrollTop(), m_buffer->scrollBottom() + 1, m_buffer->x(), count);
        m_buffer->insertColumns(m_buffer->x(), count, pen());
    }
}

void Terminal::cmdDeleteColumns(int count) {
    if (m_buffer->isInsideMargins()) {
        moveTextImages(m_buffer->scrollTop(), m_buffer->scrollBottom() + 1, m_buffer->x(), -count);
        m_buffer->deleteColumns(m_buffer->x(), count, pen());
    }
}

/// SL for a positive count, SR for a negative one.
void Terminal::shiftColumns(int count) {
    if (!m_buffer->isInsideMargins()) {
        return;
    }
    moveTextImages(m_buffer->scrollTop(), m_buffer->scrollBottom() + 1, m_buffer->marginLeft(), -count);
    if (count > 0) {
        m_buffer->deleteColumns(m_buffer->marginLeft(), count, pen());
    } else {
        m_buffer->insertColumns(m_buffer->marginLeft(), -count, pen());
    }
}

void Terminal::cmdRepeatPrecedingCharacter(int count) {
    const char32_t scalar = m_buffer->lastScalar();
    if (scalar == 0) {
        return;
    }
    m_buffer->repeatScalar(scalar, count, pen());
}

void Terminal::cmdScreenAlignmentPattern() {
    Buffer& b = *m_buffer;
    b.resetMargins();
    m_modes.origin = false;
    for (int row = 0; row < b.rows(); ++row) {
        const RectangleMemory::Filling filling = alignmentPattern(b);
        if (m_rectangles.isFilled(b.line(row), filling)) {
            continue;
        }
        b.eraseCells(row, 0, b.cols(), {});
        b.line(row).setRenderMode(RenderLineMode::single);
        b.line(row).fill(0, b.cols(), filling.second);
        m_rectangles.noteFilled(row, b.line(row), filling);
    }
    b.setCursor(0, 0);
}

void Terminal::setLineMode(RenderLineMode mode) {
    Buffer& b = *m_buffer;
    if (b.marginMode) {
        return;
    }
    b.setLineMode(b.y(), mode);
    if (mode != RenderLineMode::single) {
        const int columns = b.lastColumn(b.y()) + 1;
        loseTextImages({b.y(), columns, b.y() + 1, b.cols()});
        b.line(b.y()).fill(columns, b.cols(), pen().blank);
        const bool wasPending = b.pendingWrap();
        b.setCursor(std::min(b.x(), columns - 1), b.y());
        b.setPendingWrap(wasPending);
    }
}

} // namespace term
