#include "TermEngine/Buffer.h"

#include "TermEngine/Diagnostics.h"

#include <algorithm>

namespace term {
namespace {

std::size_t lengthOf(const Buffer::Setup& setup, int rows) {
    return static_cast<std::size_t>(rows + (setup.hasScrollback ? setup.scrollback : 0));
}

} // namespace

Buffer::Buffer(std::shared_ptr<CellArena> arena, const Setup& setup)
    : m_cellArena(std::move(arena)),
      m_setup(setup),
      m_ops(*setup.ops),
      m_cols(setup.cols),
      m_rows(setup.rows),
      m_lines(lengthOf(setup, setup.rows)),
      m_scrollBottom(setup.rows - 1),
      m_marginRight(setup.cols - 1) {
    fillRows();
    setupTabStops();
}

std::unique_ptr<BufferLine> Buffer::getBlankLine(PackedCell blank) {
    auto line = std::make_unique<BufferLine>(m_cols, blank);
    line->setRenderIdentity(nextIdentity());
    line->setBidiState(defaultBidiState);
    return line;
}

[[gnu::cold]] std::size_t Buffer::indexInside(int index) const {
    logDiagnostic("Buffer: You passed an index out of range, adjusting to prevent crash, but you should debug");
    return static_cast<std::size_t>(std::clamp(index, 0, lineCount() - 1));
}

void Buffer::fillRows() {
    while (lineCount() < m_yBase + m_rows) {
        m_lines.push(getBlankLine({}));
    }
}

void Buffer::setYDisp(int yDisp) {
    m_yDisp = std::clamp(yDisp, 0, m_yBase);
}

void Buffer::setScrollRegion(int top, int bottom) {
    m_scrollTop = top;
    m_scrollBottom = bottom;
}

void Buffer::setMargins(int left, int right) {
    m_marginLeft = left;
    m_marginRight = right;
}

void Buffer::setLineMode(int row, RenderLineMode mode) {
    line(row).setRenderMode(mode);
    m_hasDoubleLines = m_hasDoubleLines || mode != RenderLineMode::single;
}

void Buffer::resetMargins() {
    m_scrollTop = 0;
    m_scrollBottom = m_rows - 1;
    m_marginLeft = 0;
    m_marginRight = m_cols - 1;
}

void Buffer::eraseCells(int row, int first, int end, PackedCell blank) {
    line(row).fill(first, end, blank);
    if (first == 0 && end >= m_cols) {
        line(row).setWrapped(false);
    }
    // Nothing flows over any more.
    if (end >= m_cols && row + 1 < m_rows) {
        line(row + 1).setWrapped(false);
    }
}

void Buffer::eraseUnprotected(int row, int first, int end, PackedCell blank) {
    line(row).fillUnprotected(first, end, blank);
}

void Buffer::clearHistory() {
    m_lines.dropOldest(static_cast<std::size_t>(m_yBase));
    m_trimmedCount += static_cast<std::uint64_t>(m_yBase);
    m_yBase = 0;
    m_yDisp = 0;
    line(0).setWrapped(false);
}

void Buffer::clear(PackedCell blank) {
    m_trimmedCount += static_cast<std::uint64_t>(m_yBase);
    m_lines.dropOldest(static_cast<std::size_t>(m_yBase));
    m_hasDoubleLines = false;
    m_yBase = 0;
    m_yDisp = 0;
    for (int row = 0; row < m_rows; ++row) {
        renew(line(row), blank);
    }
    resetMargins();
    setCursor(0, 0);
}

void Buffer::setupTabStops(int width) {
    m_tabStops.assign(static_cast<std::size_t>(m_cols), false);
    for (int col = width; width > 0 && col < m_cols; col += width) {
        m_tabStops[static_cast<std::size_t>(col)] = true;
    }
}

void Buffer::setTabStop(int col) {
    m_tabStops[static_cast<std::size_t>(col)] = true;
}

void Buffer::clearTabStop(int col) {
    m_tabStops[static_cast<std::size_t>(col)] = false;
}

void Buffer::clearAllTabStops() {
    std::fill(m_tabStops.begin(), m_tabStops.end(), false);
}

int Buffer::nextTabStop(int col) const {
    for (++col; col < m_cols - 1 && !m_tabStops[static_cast<std::size_t>(col)];) {
        ++col;
    }
    return std::min(col, m_cols - 1);
}

int Buffer::previousTabStop(int col) const {
    for (--col; col > 0 && !m_tabStops[static_cast<std::size_t>(col)];) {
        --col;
    }
    return std::max(col, 0);
}

void Buffer::changeHistorySize(int scrollback) {
    m_setup.scrollback = std::max(scrollback, 0);
    const std::size_t length = lengthOf(m_setup, m_rows);
    const int dropped = std::max(0, lineCount() - static_cast<int>(length));
    m_lines.setMaxLength(length);
    m_trimmedCount += static_cast<std::uint64_t>(dropped);
    m_yBase -= dropped;
    m_yDisp = std::max(0, m_yDisp - dropped);
}

void Buffer::mark(CellArena::Marker& marker) const {
    for (int index = 0; index < lineCount(); ++index) {
        marker.mark(lineAt(index).usedCells());
        marker.markPen(lineAt(index).tailBlankCell().rawValue);
    }
}

void Buffer::coarsen(CellArena::Coarsening& coarsening) {
    const int coarseEnd = static_cast<int>(std::max(m_coarseEnd, m_trimmedCount) - m_trimmedCount);
    int index = lineCount() - 1;
    for (; index >= coarseEnd && (index >= m_yBase || coarsening.hasRoom()); --index) {
        coarsening.keep(lineAt(index).usedCells());
        coarsening.keepPen(lineAt(index).tailBlankCell().rawValue);
    }
    m_coarseEnd = std::max(m_coarseEnd, m_trimmedCount + static_cast<std::uint64_t>(index + 1));
    for (int i = index; i >= coarseEnd; --i) {
        coarsening.keepPlaceholders(lineAt(i).usedCells());
    }
    for (; index >= coarseEnd; --index) {
        BufferLine& line = lineAt(index);
        coarsening.spare(line.tailBlankCell());
        if (coarsening.changes(line.usedCells())) {
            coarsening.coarsen(line.edit(0, line.usedLength()));
        }
    }
}

void Buffer::release(CellArena::Releasing& releasing) {
    int index = lineCount() - 1;
    for (; index >= 0 && (index >= m_yBase || releasing.hasRoom()); --index) {
        releasing.keep(lineAt(index).usedCells());
        releasing.keepPen(lineAt(index).tailBlankCell().rawValue);
    }
    for (; index >= 0; --index) {
        BufferLine& line = lineAt(index);
        if (releasing.changes(line.usedCells())) {
            releasing.release(line.edit(0, line.usedLength()));
        }
    }
}

} // namespace term
