#include "TermEngine/Reflow_p.h"

#include <algorithm>
#include <cstdint>

namespace term {
namespace {

bool flows(const BufferLine& line) {
    return line.renderMode() == RenderLineMode::single;
}

/// How many cells of a row go on: all of a row that the next one continues, but for the column that a wide character
/// left free.
int lengthOf(const BufferLine& row, bool isLast) {
    if (isLast) {
        return row.getTrimmedLength();
    }
    return row[row.size() - 1].widthState() == WidthState::wrapPad ? row.size() - 1 : row.size();
}

} // namespace

std::vector<Reflow::Line> Reflow::run(std::vector<Line> lines) {
    m_made.reserve(lines.size());
    const int count = static_cast<int>(lines.size());
    const auto at = [&lines](int index) -> BufferLine& { return *lines[static_cast<std::size_t>(index)]; };
    for (int first = 0; first < count;) {
        int end = first + 1;
        while (end < count && at(end).isWrapped() && flows(at(end)) && flows(at(first))) {
            ++end;
        }
        if (end == first + 1 && (at(first).getTrimmedLength() <= m_cols || !flows(at(first)))) {
            keep(std::move(lines[static_cast<std::size_t>(first)]), first);
        } else {
            flow(lines, first, end);
        }
        first = end;
    }
    return std::move(m_made);
}

void Reflow::keep(Line line, int index) {
    const int width = line->size();
    line->resize(m_cols);
    const int length = line->getTrimmedLength();
    m_made.push_back(std::move(line));
    m_col = 0;
    place(index, 0, length, 0);
    placeBehind(index, length, length, width);
}

void Reflow::flow(std::vector<Line>& lines, int first, int end) {
    m_bidiState = lines[static_cast<std::size_t>(first)]->bidiState();
    nextRow(lines[static_cast<std::size_t>(first)]->isWrapped());
    m_made.back()->setSemanticHardContinuationGroup(
        lines[static_cast<std::size_t>(first)]->semanticHardContinuationGroup());
    for (int index = first == 0 ? passOver(lines, end) : first; index < end; ++index) {
        const Line row = std::move(lines[static_cast<std::size_t>(index)]);
        const bool isLast = index + 1 == end;
        const int length = lengthOf(*row, isLast);
        if (row->semanticMarks().any()) {
            // They belong to the text of the row, which may begin behind a full one.
            if (m_col == m_cols && length > 0) {
                nextRow(true);
            }
            BufferLine& marked = *m_made.back();
            marked.setSemanticMark(marked.semanticMarks() | row->semanticMarks());
        }
        copyRow(*row, index, length);
        placeBehind(index, length, m_col, row->size());
        if (isLast) {
            m_made.back()->fill(m_col, m_cols, row->tailBlankCell());
        }
    }
}

/// Of the first lines, up to `end`, that flow on as one: those of the history are gone through without making rows of
/// them, and the one is found from which on that has to be done. (A screen of 300 columns and a history of 100,000
/// lines make 15 million rows of two columns.)
int Reflow::passOver(const std::vector<Line>& lines, int end) {
    const int last = std::min(end - 1, m_history.end);
    const std::int64_t cells = std::int64_t{std::max(last, 0)} * lines.front()->size();
    if (cells / m_cols <= m_history.room) {
        return 0;
    }
    struct Start {
        int row;
        int col;
    };
    std::vector<Start> starts;
    m_isPassing = true;
    for (int index = 0; index < last; ++index) {
        starts.push_back({newestRow(), m_col});
        const BufferLine& row = *lines[static_cast<std::size_t>(index)];
        const int length = lengthOf(row, false);
        copyRow(row, index, length);
        placeBehind(index, length, m_col, row.size());
    }
    m_isPassing = false;
    m_passed = 0;
    const auto behind = std::ranges::upper_bound(starts, newestRow() - m_history.room, {}, &Start::row);
    const int index = std::max(static_cast<int>(behind - starts.begin()) - 1, 0);
    // The row that this line goes on with is one of those that go, whatever stands in it.
    m_passedRows = starts[static_cast<std::size_t>(index)].row;
    m_col = starts[static_cast<std::size_t>(index)].col;
    return index;
}

void Reflow::nextRow(bool wrapped) {
    m_col = 0;
    if (m_isPassing) {
        ++m_passedRows;
        return;
    }
    m_made.push_back(m_blankLine());
    m_made.back()->setWrapped(wrapped);
    m_made.back()->setBidiState(m_bidiState);
}

void Reflow::copyCells(const BufferLine& row, int col, int count) {
    BufferLine& target = *m_made.back();
    if (row.hasWide()) {
        target.noteWide();
    }
    PackedCell* const cells = target.write(m_col, count);
    for (int i = 0; i < count; ++i) {
        cells[i] = row[col + i];
    }
    if (m_cols == 1) {
        // There is no room for a wide character: its first half stands for it.
        cells[0] = cells[0].with(WidthState::narrow);
    }
}

void Reflow::copyRow(const BufferLine& row, int index, int length) {
    if (m_isPassing && !row.hasWide() && length > 0 && anchorsOf(index).empty()) {
        const int end = m_col + length - 1;
        m_passedRows += end / m_cols;
        m_col = end % m_cols + 1;
        return;
    }
    for (int col = 0; col < length;) {
        if (m_cols == 1 && row[col].isSpacer()) {
            place(index, col++, 1, 0); // with the first half
            continue;
        }
        if (m_col == m_cols) {
            nextRow(true);
        }
        int count = std::min(length - col, m_cols - m_col);
        // The last one is the first half of a wide character.
        const bool isCut = m_col + count == m_cols && row.hasWide() && row[col + count - 1].isWide();
        count -= isCut && m_cols > 1 ? 1 : 0;
        if (count > 0) {
            if (!m_isPassing) {
                copyCells(row, col, count);
            }
            place(index, col, count, m_col);
            m_col += count;
            col += count;
        }
        if (isCut && m_cols > 1) {
            if (!m_isPassing) {
                m_made.back()->set(m_col, PackedCell().with(WidthState::wrapPad));
            }
            m_col = m_cols;
        }
    }
}

/// Lines are asked for in their order.
std::span<const std::size_t> Reflow::anchorsOf(int index) {
    while (m_passed < m_byLine.size() && m_source[m_byLine[m_passed]].line < index) {
        ++m_passed;
    }
    std::size_t end = m_passed;
    while (end < m_byLine.size() && m_source[m_byLine[end]].line == index) {
        ++end;
    }
    return std::span(m_byLine).subspan(m_passed, end - m_passed);
}

/// The anchors in `count` cells of a source row stand from `col` of the newest row on.
void Reflow::place(int index, int sourceCol, int count, int col) {
    for (const std::size_t i : anchorsOf(index)) {
        if (m_source[i].col >= sourceCol && m_source[i].col < sourceCol + count) {
            m_anchors[i] = {newestRow(), col + m_source[i].col - sourceCol};
        }
    }
}

/// Those past the text keep their distance from it, as far as the line goes: only one that stood behind a whole line,
/// or whose text now fills one, stands behind a line.
void Reflow::placeBehind(int index, int length, int col, int width) {
    for (const std::size_t i : anchorsOf(index)) {
        if (const int from = m_source[i].col; from >= length) {
            const int last = from >= width ? m_cols : std::max(m_cols - 1, col);
            m_anchors[i] = {newestRow(), std::min(col + from - length, last)};
        }
    }
}

} // namespace term
