#include "TermEngine/Terminal.h"

#include <algorithm>

namespace term {

void Terminal::cmdCursorUp(int count) {
    Buffer& b = *m_buffer;
    const int top = b.y() >= b.scrollTop() ? b.scrollTop() : 0;
    b.setCursor(b.x(), std::max(b.y() - count, top));
}

void Terminal::cmdCursorDown(int count) {
    Buffer& b = *m_buffer;
    const int bottom = b.y() <= b.scrollBottom() ? b.scrollBottom() : b.rows() - 1;
    b.setCursor(b.x(), std::min(b.y() + count, bottom));
}

void Terminal::cursorForward(int count) {
    Buffer& b = *m_buffer;
    const int last = b.lastColumn(b.y());
    const int right = b.x() <= b.marginRight() ? std::min(b.marginRight(), last) : last;
    b.setCursor(std::min(b.x() + count, std::max(right, b.x())), b.y());
}

/// CUB, and BS as one step of it: with reverse wraparound (45) the cursor goes from the left margin to the end of the
/// line above when that one flows over, with the extended one (1045) in any case, and from the top to the bottom.
void Terminal::cursorBackward(int count) {
    Buffer& b = *m_buffer;
    const bool wraps = b.wraparound && (b.reverseWraparound || b.extendedReverseWraparound);
    if (wraps && b.pendingWrap()) {
        --count;
    }
    int x = b.x();
    int y = b.y();
    // No way is longer than once around the screen.
    count = std::min(count, b.cols() * b.rows());
    while (count > 0) {
        const int left = x >= b.marginLeft() ? b.marginLeft() : 0;
        const int step = std::min(count, x - left);
        x -= step;
        count -= step;
        if (count == 0 || !wraps) {
            break;
        }
        const bool isTop = y == b.scrollTop() || y == 0;
        if (isTop && (!b.extendedReverseWraparound || y != b.scrollTop())) {
            break;
        }
        if (!b.extendedReverseWraparound && !b.line(y).isWrapped()) {
            break;
        }
        y = isTop ? b.scrollBottom() : y - 1;
        x = b.marginRight();
        --count;
    }
    b.setCursor(x, y);
}

/// HPR and VPR: the margins count in origin mode only.
void Terminal::cursorRelative(int cols, int rows) {
    Buffer& b = *m_buffer;
    const int right = m_modes.origin ? b.marginRight() : b.cols() - 1;
    const int bottom = m_modes.origin ? b.scrollBottom() : b.rows() - 1;
    b.setCursor(std::min(b.x() + cols, right), std::min(b.y() + rows, bottom));
}

void Terminal::cmdCursorCharAbsolute(int col) {
    Buffer& b = *m_buffer;
    if (m_modes.origin) {
        b.setCursor(std::min(b.marginLeft() + col, b.marginRight()), b.y());
    } else {
        b.setCursor(col, b.y());
    }
}

void Terminal::cmdLinePosAbsolute(int row) {
    Buffer& b = *m_buffer;
    if (m_modes.origin) {
        b.setCursor(b.x(), std::min(b.scrollTop() + row, b.scrollBottom()));
    } else {
        b.setCursor(b.x(), row);
    }
}

void Terminal::carriageReturn() {
    Buffer& b = *m_buffer;
    b.setCursor(b.x() >= b.marginLeft() || m_modes.origin ? b.marginLeft() : 0, b.y());
}

void Terminal::lineFeed() {
    if (m_modes.newline || m_options.convertEol) {
        carriageReturn();
    }
    m_buffer->index(pen());
    if (m_buffer->semantic.isInPrompt()) [[unlikely]] {
        continuePrompt();
    }
}

/// To the left margin, also from left of it.
void Terminal::nextLine() {
    m_buffer->setCursor(m_buffer->marginLeft(), m_buffer->y());
    m_buffer->index(pen());
    if (m_buffer->semantic.isInPrompt()) [[unlikely]] {
        continuePrompt();
    }
}

void Terminal::backspace() {
    cursorBackward(1);
}

void Terminal::tab(int count) {
    Buffer& b = *m_buffer;
    const int right = b.x() <= b.marginRight() ? b.marginRight() : b.cols() - 1;
    for (count = std::min(count, b.cols() - 1); count > 0 && b.x() < right; --count) {
        b.setCursor(std::min(b.nextTabStop(b.x()), right), b.y());
    }
}

void Terminal::backTab(int count) {
    Buffer& b = *m_buffer;
    const int left = m_modes.origin && b.x() >= b.marginLeft() ? b.marginLeft() : 0;
    for (count = std::min(count, b.cols()); count > 0 && b.x() > left; --count) {
        b.setCursor(std::max(b.previousTabStop(b.x()), left), b.y());
    }
}

void Terminal::cmdTabClear(int what) {
    if (what == 0) {
        m_buffer->clearTabStop(m_buffer->x());
    } else if (what == 3) {
        m_buffer->clearAllTabStops();
    }
}

void Terminal::cmdSaveCursor() {
    Buffer& b = *m_buffer;
    b.saved = {
        .x = b.x(),
        .y = b.y(),
        .pendingWrap = b.pendingWrap(),
        .originMode = m_modes.origin,
        .marginMode = b.marginMode,
        .wraparound = b.wraparound,
        .reverseWraparound = b.reverseWraparound,
        .attribute = m_attribute,
        .isProtected = m_isProtected,
        .charset = m_charset};
}

void Terminal::cmdRestoreCursor() {
    Buffer& b = *m_buffer;
    const SavedCursor& saved = b.saved;
    m_modes.origin = saved.originMode;
    b.marginMode = saved.marginMode.value_or(b.marginMode);
    b.wraparound = saved.wraparound.value_or(b.wraparound);
    b.reverseWraparound = saved.reverseWraparound.value_or(b.reverseWraparound);
    m_attribute = saved.attribute;
    m_isProtected = saved.isProtected;
    m_isPenStale = true;
    m_charset = saved.charset;
    b.setCursor(saved.x, saved.y);
    b.setPendingWrap(saved.pendingWrap && saved.x == b.x());
}

/// Both count from 1; 0 for the whole screen.
void Terminal::cmdSetScrollRegion(int first, int last) {
    Buffer& b = *m_buffer;
    const int top = std::max(first, 1) - 1;
    const int bottom = last == 0 || last > b.rows() ? b.rows() - 1 : last - 1;
    if (top < bottom) {
        b.setScrollRegion(top, bottom);
        cmdCursorPosition(0, 0);
    }
}

void Terminal::cmdSetMargins(const CsiParameters& parameters) {
    Buffer& b = *m_buffer;
    const int left = parameters.atLeastOne(0) - 1;
    const int given = parameters.at(1);
    const int right = given == 0 || given > b.cols() ? b.cols() - 1 : given - 1;
    if (left < right) {
        b.setMargins(left, right);
        cmdCursorPosition(0, 0);
    }
}

void Terminal::backIndex() {
    Buffer& b = *m_buffer;
    if (b.x() == b.marginLeft()) {
        if (b.isInsideMargins()) {
            moveTextImages(b.scrollTop(), b.scrollBottom() + 1, b.marginLeft(), 1);
            b.insertColumns(b.marginLeft(), 1, pen());
        }
    } else {
        b.setCursor(b.x() - 1, b.y());
    }
}

void Terminal::forwardIndex() {
    Buffer& b = *m_buffer;
    if (b.x() == b.marginRight()) {
        if (b.isInsideMargins()) {
            moveTextImages(b.scrollTop(), b.scrollBottom() + 1, b.marginLeft(), -1);
            b.deleteColumns(b.marginLeft(), 1, pen());
        }
    } else {
        b.setCursor(b.x() + 1, b.y());
    }
}

} // namespace term
