#include "TermEngine/Buffer.h"

#include <algorithm>

namespace term {

void Buffer::index(const Pen& pen) {
    m_pendingWrap = false;
    if (m_y == m_scrollBottom) {
        if (m_x >= marginLeft() && m_x <= marginRight()) {
            scrollUp(1, pen);
        }
    } else if (m_y < m_rows - 1) {
        ++m_y;
        m_x = std::min(m_x, lastColumn(m_y));
    }
}

void Buffer::reverseIndex(const Pen& pen) {
    m_pendingWrap = false;
    if (m_y == m_scrollTop) {
        if (m_x >= marginLeft() && m_x <= marginRight()) {
            scrollDown(1, pen);
        }
    } else if (m_y > 0) {
        --m_y;
        m_x = std::min(m_x, lastColumn(m_y));
    }
}

/// A blank line at the end of the ring; the lines above it, down to index `above`, go up by one.
void Buffer::pushLine(int above, PackedCell blank) {
    const bool follows = m_yDisp == m_yBase;
    if (m_lines.isFull()) {
        BufferLine& oldest = *m_lines.turn();
        oldest.recycle(m_cols, blank, nextIdentity());
        oldest.setBidiState(defaultBidiState);
        ++m_trimmedCount;
        m_yDisp = follows ? m_yBase : std::max(m_yDisp - 1, 0);
    } else {
        m_lines.push(getBlankLine(blank));
        ++m_yBase;
        m_yDisp = follows ? m_yBase : m_yDisp;
    }
    if (above > 0) {
        m_lines.moveElement(m_lines.size() - 1, m_lines.size() - 1 - static_cast<std::size_t>(above));
    }
}

void Buffer::scrollUp(int count, const Pen& pen) {
    count = std::min(count, m_scrollBottom - m_scrollTop + 1);
    if (marginMode && (m_marginLeft > 0 || m_marginRight < m_cols - 1)) {
        moveColumnsVertically(m_scrollTop, m_scrollBottom, count, pen.blank);
        return;
    }
    if (m_scrollTop > 0 || !m_setup.hasScrollback || m_setup.scrollback == 0) {
        scrollRegionUp(m_scrollTop, m_scrollBottom, count, pen.blank);
        return;
    }
    for (int i = 0; i < count; ++i) {
        pushLine(m_rows - 1 - m_scrollBottom, pen.blank);
    }
    if (m_scrollBottom < m_rows - 1) {
        line(m_scrollBottom + 1).setWrapped(false);
        if (lineObserver != nullptr) {
            lineObserver->rowsRenumbered(*this, m_scrollBottom + 1, count);
        }
    }
}

/// Both ends are part of what moved.
void Buffer::tellMoved(int top, int bottom, int left, int right, int by) {
    if (lineObserver != nullptr) {
        lineObserver->linesMoved(*this, {top, left, bottom + 1, right + 1}, by);
    }
}

void Buffer::tellWideLost(int row, int col) {
    if (col > 0 && col < m_cols && line(row)[col].isSpacer()) {
        lineObserver->cellsLost(*this, row, col - 1, col + 1);
    }
}

void Buffer::scrollDown(int count, const Pen& pen) {
    count = std::min(count, m_scrollBottom - m_scrollTop + 1);
    if (marginMode && (m_marginLeft > 0 || m_marginRight < m_cols - 1)) {
        moveColumnsVertically(m_scrollTop, m_scrollBottom, -count, pen.blank);
    } else {
        scrollRegionDown(m_scrollTop, m_scrollBottom, count, pen.blank);
    }
}

void Buffer::scrollRegionUp(int top, int bottom, int count, PackedCell blank) {
    for (int i = 0; i < count; ++i) {
        m_lines.moveElement(static_cast<std::size_t>(m_yBase + top), static_cast<std::size_t>(m_yBase + bottom));
        BufferLine& fresh = line(bottom);
        fresh.recycle(m_cols, blank, nextIdentity());
        fresh.setBidiState(defaultBidiState);
    }
    tellMoved(top, bottom, 0, m_cols - 1, -count);
    line(top).setWrapped(false);
    if (bottom < m_rows - 1) {
        line(bottom + 1).setWrapped(false);
    }
}

void Buffer::scrollRegionDown(int top, int bottom, int count, PackedCell blank) {
    for (int i = 0; i < count; ++i) {
        m_lines.moveElement(static_cast<std::size_t>(m_yBase + bottom), static_cast<std::size_t>(m_yBase + top));
        BufferLine& fresh = line(top);
        fresh.recycle(m_cols, blank, nextIdentity());
        fresh.setBidiState(defaultBidiState);
    }
    tellMoved(top, bottom, 0, m_cols - 1, count);
    if (top + count <= bottom) {
        line(top + count).setWrapped(false);
    }
    if (bottom < m_rows - 1) {
        line(bottom + 1).setWrapped(false);
    }
}

/// The cells between the left and right margins; up for a positive count.
void Buffer::moveColumnsVertically(int top, int bottom, int count, PackedCell blank) {
    const int left = marginLeft();
    const int width = marginRight() - left + 1;
    const int height = bottom - top + 1;
    const int step = count > 0 ? 1 : -1;
    for (int row = top; tellsLosses && row <= bottom; ++row) {
        tellCut(row, left);
        tellCut(row, left + width);
    }
    for (int i = 0; i < height; ++i) {
        const int row = count > 0 ? top + i : bottom - i;
        const int source = row + count;
        line(row).setWrapped(false);
        if (i + step * count < height) {
            line(row).copyFrom(line(source), left, left, width);
        } else {
            line(row).fill(left, left + width, blank);
        }
    }
    tellMoved(top, bottom, left, left + width - 1, -count);
}

void Buffer::insertLines(int count, const Pen& pen) {
    if (!isInsideMargins()) {
        return;
    }
    count = std::min(count, m_scrollBottom - m_y + 1);
    if (marginMode && (m_marginLeft > 0 || m_marginRight < m_cols - 1)) {
        moveColumnsVertically(m_y, m_scrollBottom, -count, pen.blank);
    } else {
        scrollRegionDown(m_y, m_scrollBottom, count, pen.blank);
    }
    setCursor(marginLeft(), m_y);
}

void Buffer::deleteLines(int count, const Pen& pen) {
    if (!isInsideMargins()) {
        return;
    }
    count = std::min(count, m_scrollBottom - m_y + 1);
    if (marginMode && (m_marginLeft > 0 || m_marginRight < m_cols - 1)) {
        moveColumnsVertically(m_y, m_scrollBottom, count, pen.blank);
    } else {
        scrollRegionUp(m_y, m_scrollBottom, count, pen.blank);
    }
    setCursor(marginLeft(), m_y);
}

void Buffer::insertColumns(int col, int count, const Pen& pen) {
    for (int row = m_scrollTop; row <= m_scrollBottom; ++row) {
        line(row).insertPackedCells(col, count, marginRight() + 1, pen.blank);
        line(row).setWrapped(false);
    }
}

void Buffer::deleteColumns(int col, int count, const Pen& pen) {
    for (int row = m_scrollTop; row <= m_scrollBottom; ++row) {
        line(row).deleteCells(col, count, marginRight() + 1, pen.blank);
        line(row).setWrapped(false);
    }
}

} // namespace term
