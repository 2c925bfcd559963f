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
        renew(*m_lines.turn(), blank);
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
    const auto first = static_cast<std::size_t>(m_yBase + top);
    const auto last = static_cast<std::size_t>(m_yBase + bottom);
    if (count == 1) [[likely]] {
        m_lines.moveElement(first, last);
    } else {
        m_lines.rotate(first, first + static_cast<std::size_t>(count), last + 1);
    }
    for (int row = bottom - count + 1; row <= bottom; ++row) {
        renew(line(row), blank);
    }
    tellMoved(top, bottom, 0, m_cols - 1, -count);
    line(top).setWrapped(false);
    if (bottom < m_rows - 1) {
        line(bottom + 1).setWrapped(false);
    }
}

void Buffer::scrollRegionDown(int top, int bottom, int count, PackedCell blank) {
    const auto first = static_cast<std::size_t>(m_yBase + top);
    const auto last = static_cast<std::size_t>(m_yBase + bottom);
    if (count == 1) [[likely]] {
        m_lines.moveElement(last, first);
    } else {
        m_lines.rotate(first, last + 1 - static_cast<std::size_t>(count), last + 1);
    }
    for (int row = top; row < top + count; ++row) {
        renew(line(row), blank);
    }
    tellMoved(top, bottom, 0, m_cols - 1, count);
    if (top + count <= bottom) {
        line(top + count).setWrapped(false);
    }
    if (bottom < m_rows - 1) {
        line(bottom + 1).setWrapped(false);
    }
}

/// Whether a row has been found to be so, and has not changed since.
bool Buffer::isBlank(int row, const BlankColumns& columns) {
    return m_blankColumns.find(line(row), columns) != nullptr;
}

/// The cells between the left and right margins; up for a positive count.
void Buffer::moveColumnsVertically(int top, int bottom, int count, PackedCell blank) {
    const int left = marginLeft();
    const int right = marginRight() + 1;
    const int height = bottom - top + 1;
    const int step = count > 0 ? 1 : -1;
    // Rather than cells, lines give each other what they have, and take back what is beside the margins.
    const bool isMost = (right - left) * 3 > m_cols * 2;
    const BlankColumns columns{left, right, blank};
    for (int row = top; tellsLosses && row <= bottom; ++row) {
        tellCut(row, left);
        tellCut(row, right);
    }
    for (int i = 0; i < height; ++i) {
        const int row = count > 0 ? top + i : bottom - i;
        const int source = row + count;
        BufferLine& target = line(row);
        target.setWrapped(false);
        if (i + step * count < height && !isBlank(source, columns)) {
            if (isMost) {
                target.swapCells(line(source), left, right);
            } else {
                target.copyFrom(line(source), left, left, right - left);
            }
        } else if (!isBlank(row, columns)) {
            target.fill(left, right, blank);
            m_blankColumns.keep(m_rows - 1, target, columns, {});
        }
    }
    tellMoved(top, bottom, left, right - 1, -count);
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

template <typename Move>
void Buffer::moveColumns(int col, PackedCell blank, const Move& move) {
    const int end = marginRight() + 1;
    const BlankColumns columns{col, end, blank};
    for (int row = m_scrollTop; row <= m_scrollBottom; ++row) {
        BufferLine& target = line(row);
        target.setWrapped(false);
        if (isBlank(row, columns)) {
            continue;
        }
        if (col < end && target.isFilledWith(col, end, blank)) {
            m_blankColumns.keep(m_rows - 1, target, columns, {});
        } else {
            move(target, end);
        }
    }
}

void Buffer::insertColumns(int col, int count, const Pen& pen) {
    moveColumns(col, pen.blank, [&](BufferLine& line, int end) { line.insertPackedCells(col, count, end, pen.blank); });
}

void Buffer::deleteColumns(int col, int count, const Pen& pen) {
    moveColumns(col, pen.blank, [&](BufferLine& line, int end) { line.deleteCells(col, count, end, pen.blank); });
}

} // namespace term
