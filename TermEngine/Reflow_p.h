#pragma once

#include "TermEngine/BufferLine.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <numeric>
#include <span>
#include <vector>

namespace term {

/// Lines of one width made into lines of another: those that a soft wrap joins flow on, up to the new width; no wide
/// character is cut; the blank tail of a line stays behind.
class Reflow {
public:
    using Line = std::unique_ptr<BufferLine>;
    /// A place in the text, which comes out of the reflow on the same character.
    struct Anchor {
        int line;
        int col;
    };

    /// Of the lines before `end`, rows that more than `room` rows of them follow are sure to go.
    struct History {
        int end;
        int room;
    };

    Reflow(int cols, History history, std::vector<Anchor> anchors, std::function<Line()> blankLine)
        : m_cols(cols),
          m_history(history),
          m_source(anchors),
          m_anchors(std::move(anchors)),
          m_blankLine(std::move(blankLine)) {
        m_byLine.resize(m_source.size());
        std::iota(m_byLine.begin(), m_byLine.end(), std::size_t{0});
        std::ranges::sort(m_byLine, {}, [this](std::size_t i) { return m_source[i].line; });
    }

    [[nodiscard]] std::vector<Line> run(std::vector<Line> lines);
    /// After the run: so many rows at the front, which are sure to go, were not made.
    [[nodiscard]] int passedRows() const { return m_passedRows; }
    /// After the run, in the order given, those rows counted. A column as big as the width means: behind a full line.
    [[nodiscard]] const std::vector<Anchor>& anchors() const { return m_anchors; }

private:
    void keep(Line line, int index);
    void flow(std::vector<Line>& lines, int first, int end);
    int passOver(const std::vector<Line>& lines, int end);
    void copyRow(const BufferLine& row, int index, int length);
    void copyCells(const BufferLine& row, int col, int count);
    void nextRow(bool wrapped);
    [[nodiscard]] int newestRow() const { return m_passedRows + static_cast<int>(m_made.size()) - 1; }
    void place(int index, int sourceCol, int count, int col);
    void placeBehind(int index, int length, int col, int width);
    [[nodiscard]] std::span<const std::size_t> anchorsOf(int index);

    int m_cols;
    History m_history;
    std::vector<Anchor> m_source;
    std::vector<Anchor> m_anchors;
    std::vector<std::size_t> m_byLine; ///< the anchors in the order of their lines
    std::size_t m_passed = 0;          ///< so many of them are of lines that are done
    std::function<Line()> m_blankLine;
    std::vector<Line> m_made;
    int m_passedRows = 0;
    bool m_isPassing = false; ///< rows are counted, and not made
    int m_col = 0;
    std::uint8_t m_bidiState = 0;
};

} // namespace term
