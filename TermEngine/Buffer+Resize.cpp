#include "TermEngine/Buffer.h"
#include "TermEngine/Diagnostics.h"
#include "TermEngine/Reflow_p.h"

#include <algorithm>

namespace term {

void Buffer::resize(int newCols, int newRows, std::span<LinePlace> places) {
    if (newCols == m_cols && newRows == m_rows) {
        return;
    }
    // Room for all that a reflow makes; what is too much goes at the end.
    const std::size_t length = static_cast<std::size_t>(newRows + (m_setup.hasScrollback ? m_setup.scrollback : 0));
    const bool flows = newCols != m_cols;
    if (flows) {
        resizeTabStops(newCols);
        if (m_setup.hasScrollback) {
            reflow(newCols, newRows, places);
        } else {
            cutOrExtend(newCols);
        }
    }
    m_lines.setMaxLength(std::max(length, m_lines.size()) + static_cast<std::size_t>(newRows));
    resizeRows(newRows);
    const int surplus = std::max(lineCount() - static_cast<int>(length), 0);
    m_lines.setMaxLength(length);
    m_trimmedCount += static_cast<std::uint64_t>(surplus);
    m_yBase -= surplus;
    m_yDisp = std::clamp(m_yDisp - surplus, 0, m_yBase);
    // What came back onto the screen is written to.
    m_coarseEnd = flows ? 0 : std::min(m_coarseEnd, m_trimmedCount + static_cast<std::uint64_t>(m_yBase));
    resetMargins();
    saved.x = std::clamp(saved.x, 0, m_cols - 1);
    saved.y = std::clamp(saved.y, 0, m_rows - 1);
    checkWidths(flows ? 0 : m_yBase);
}

/// All lines from `first` on are as wide as the screen, or they are made so.
void Buffer::checkWidths(int first) {
    for (int index = first; index < lineCount(); ++index) {
        if (lineAt(index).size() < m_cols) [[unlikely]] {
            logDiagnostic("A resized line is shorter than the buffer width");
            lineAt(index).resize(m_cols);
        }
    }
}

/// The last line, counted from the oldest, with the cursor or with content.
int Buffer::lastLineInUse() const {
    int last = lineCount() - 1;
    while (last > m_yBase + m_y && !lineAt(last).hasContent()) {
        --last;
    }
    return last;
}

/// More lines than this are sure not to stay when the rows change.
std::int64_t Buffer::roomFor(int rows) const {
    return std::int64_t{rows} + m_rows + m_setup.scrollback;
}

/// How many of the oldest lines are sure to go when the columns change: what comes below them is more than there will
/// be room for. (A history of 100,000 lines makes eight million rows of one column.)
int Buffer::linesWithoutRoom(int cols, int rows, int last) const {
    const std::int64_t room = roomFor(rows);
    std::int64_t made = 0;
    int first = last + 1;
    while (first > 0 && made < room) {
        const BufferLine& end = lineAt(--first);
        std::int64_t cells = end.getTrimmedLength();
        while (first > 0 && lineAt(first).isWrapped()) {
            cells += lineAt(--first).size() - 1;
        }
        // In one column, a wide character takes one of its two cells along.
        made += end.renderMode() == RenderLineMode::single ? std::max<std::int64_t>(cells / std::max(cols, 2), 1) : 1;
    }
    return std::min(first, m_yBase);
}

void Buffer::cutOrExtend(int cols) {
    m_cols = cols;
    for (int index = 0; index < lineCount(); ++index) {
        lineAt(index).resize(cols);
    }
    const int last = lastColumn(m_y);
    m_pendingWrap = m_pendingWrap && m_x == last;
    saved.pendingWrap = saved.pendingWrap && saved.x == lastColumn(saved.y);
    m_x = std::min(m_x, last);
}

void Buffer::reflow(int cols, int rows, std::span<LinePlace> places) {
    m_cols = cols;
    const bool follows = m_yDisp == m_yBase;
    const int lastInUse = lastLineInUse();
    const bool isFull = lastInUse == lineCount() - 1;
    const int dropped = linesWithoutRoom(cols, rows, lastInUse);
    const int last = lastInUse - dropped;
    m_trimmedCount += static_cast<std::uint64_t>(dropped);
    m_yBase -= dropped;
    m_yDisp = std::max(m_yDisp - dropped, 0);
    std::vector<std::unique_ptr<BufferLine>> lines;
    lines.reserve(static_cast<std::size_t>(last) + 1);
    for (int index = dropped; index <= lastInUse; ++index) {
        lines.push_back(std::move(m_lines[static_cast<std::size_t>(index)]));
    }
    const int savedLine = std::min(m_yBase + saved.y, last);
    std::vector<Reflow::Anchor> wanted{
        {m_yBase + m_y, m_x + (m_pendingWrap ? 1 : 0)},
        {savedLine, saved.x + (saved.pendingWrap ? 1 : 0)},
        {m_yBase, 0},
        {m_yDisp, 0}};
    const auto trimmed = static_cast<std::int64_t>(m_trimmedCount);
    const std::size_t ownAnchors = wanted.size();
    for (const LinePlace& place : places) {
        wanted.push_back({static_cast<int>(std::clamp<std::int64_t>(place.line - trimmed, -1, last + 1)), place.col});
    }
    const Reflow::History history{m_yBase, static_cast<int>(roomFor(rows))};
    Reflow reflow(cols, history, std::move(wanted), [this] { return getBlankLine({}); });
    lines = reflow.run(std::move(lines));
    const int passed = reflow.passedRows();
    std::vector<Reflow::Anchor> anchors = reflow.anchors();

    const int count = static_cast<int>(lines.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        // What stands above the history or below all text keeps its distance from it.
        const std::int64_t line = places[i].line - trimmed;
        if (line > last) {
            places[i].line += passed + count - 1 - last;
        } else if (line >= 0) {
            places[i] = {trimmed + anchors[ownAnchors + i].line, anchors[ownAnchors + i].col};
        }
    }
    m_trimmedCount += static_cast<std::uint64_t>(passed);
    for (Reflow::Anchor& anchor : std::span(anchors).first(ownAnchors)) {
        anchor.line = std::max(anchor.line - passed, 0);
    }
    m_lines.assign(std::move(lines));
    m_lines.setMaxLength(std::max(m_lines.size(), m_lines.maxLength()) + static_cast<std::size_t>(m_rows));
    // A screen that was full stays so, from the history; else its first line stays the first.
    m_yBase = std::max(isFull ? 0 : anchors[2].line, count - m_rows);
    m_yBase = std::min(m_yBase, anchors[0].line);
    m_yDisp = follows ? m_yBase : std::min(anchors[3].line, m_yBase);
    fillRows();
    while (lineCount() > m_yBase + m_rows) {
        m_lines.pop();
    }
    m_y = anchors[0].line - m_yBase;
    const int lastCol = lastColumn(m_y);
    const bool isDouble = line(m_y).renderMode() != RenderLineMode::single;
    // A line of double width is cut, and the cursor with it, unless it stands right behind its text.
    m_pendingWrap = anchors[0].col > lastCol &&
                    (!isDouble || (anchors[0].col == lastCol + 1 && line(m_y).getTrimmedLength() == anchors[0].col));
    m_x = std::min(anchors[0].col, lastCol);
    saved.y = std::clamp(anchors[1].line - m_yBase, 0, m_rows - 1);
    saved.pendingWrap = anchors[1].col >= cols;
    saved.x = std::min(anchors[1].col, cols - 1);
}

void Buffer::resizeRows(int rows) {
    const bool follows = m_yDisp == m_yBase;
    if (rows > m_rows && lastLineInUse() == m_yBase + m_y) {
        const int pulled = std::min(rows - m_rows, m_yBase);
        m_yBase -= pulled;
        m_y += pulled;
        saved.y += pulled;
    }
    if (rows < m_rows) {
        const int blankBelow = lineCount() - 1 - lastLineInUse();
        const int surplus = m_rows - rows;
        const int pushed = std::min(std::max(surplus - blankBelow, 0), m_y);
        for (int i = 0; i < surplus - pushed; ++i) {
            m_lines.pop();
        }
        m_yBase += pushed;
        m_y = std::min(m_y - pushed, rows - 1);
        saved.y -= pushed;
    }
    m_rows = rows;
    fillRows();
    m_yDisp = follows ? m_yBase : std::min(m_yDisp, m_yBase);
}

void Buffer::resizeTabStops(int cols) {
    const int before = m_cols;
    m_tabStops.resize(static_cast<std::size_t>(cols), false);
    for (int col = before; col < cols; ++col) {
        m_tabStops[static_cast<std::size_t>(col)] = m_setup.tabStopWidth > 0 && col % m_setup.tabStopWidth == 0;
    }
}

} // namespace term
