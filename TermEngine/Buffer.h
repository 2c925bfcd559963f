#pragma once

#include "TermEngine/BufferLine.h"
#include "TermEngine/Charsets.h"
#include "TermEngine/CircularList.h"
#include "TermEngine/RowMemo.h"
#include "TermEngine/SemanticPrompt.h"
#include "TermEngine/TerminalOptions.h"
#include "TermEngine/VectorOps.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace term {

struct Position {
    int col = 0;
    int row = 0;
    bool operator==(const Position&) const = default;
    auto operator<=>(const Position& other) const { return row != other.row ? row <=> other.row : col <=> other.col; }
};

/// With what is written: the bits that all cells of a run have, and what an erase leaves.
struct Pen {
    std::uint64_t bits = 0;
    PackedCell blank;
};

/// DECSC.
struct SavedCursor {
    int x = 0;
    int y = 0;
    bool pendingWrap = false;
    bool originMode = false;
    // Nothing: no cursor was saved, and restoring one leaves them as they are.
    std::optional<bool> marginMode{};
    std::optional<bool> wraparound{};
    std::optional<bool> reverseWraparound{};
    PackedAttributeKey attribute{};
    bool isProtected = false;
    CharsetState charset{};
};

/// A part of the screen: rows and columns, the ends excluded.
struct Rectangle {
    int top = 0;
    int left = 0;
    int bottom = 0;
    int right = 0;
    [[nodiscard]] bool isEmpty() const { return top >= bottom || left >= right; }
};

class Buffer;

/// Told of lines that move on a screen, so that what stands on them can follow. Lines count as
/// `Buffer::trimmedCount` does.
class LineObserver {
public:
    virtual ~LineObserver() = default;
    /// Between two margins, the columns `left` to `right` have moved by `by` lines, down where that is positive.
    virtual void linesMoved(const Buffer& buffer, Rectangle margins, int by) = 0;
    /// The rows from `row` on stand where they stood, but `by` lines came into the history before them.
    virtual void rowsRenumbered(const Buffer& buffer, int row, int by) = 0;
    /// Text that is inserted moves the cells of the cursor's row from `left` to the right margin by `by` columns, to
    /// the right where that is positive.
    virtual void cellsMoved(const Buffer& buffer, int left, int by) = 0;
    /// What was written into the columns from `first` to `end` of a row is about to go, with nothing in its place. Said
    /// only where the buffer `tellsLosses`.
    virtual void cellsLost(const Buffer& buffer, int row, int first, int end) = 0;
};

/// A line, counted as `Buffer::trimmedCount` does, and a column.
struct LinePlace {
    std::int64_t line = 0;
    int col = 0;
    auto operator<=>(const LinePlace&) const = default;
};

enum class ClusterMode : std::uint8_t { scalars, graphemes };

using CircularBufferLineList = CircularList<std::unique_ptr<BufferLine>>;

/// One screen with its history: lines, cursor, margins, tab stops.
///
/// Rows are those of the screen, from 0; `lines` counts from the oldest line of the history. A line is also known by
/// its number since the beginning, `trimmedCount()` more than its index, which stays while the line is there.
class Buffer {
public:
    struct Setup {
        int cols = 80;
        int rows = 25;
        int scrollback = 0;
        bool hasScrollback = false;
        int tabStopWidth = 8;
        RegionalIndicatorWidth regionalIndicatorWidth = RegionalIndicatorWidth::wide;
        const VectorOps* ops = &fastestVectorOps();
    };

    Buffer(std::shared_ptr<CellArena> arena, const Setup& setup);

    [[nodiscard]] int cols() const { return m_cols; }
    [[nodiscard]] int rows() const { return m_rows; }
    [[nodiscard]] bool hasScrollback() const { return m_setup.hasScrollback; }
    [[nodiscard]] CellArena& cellArena() const { return *m_cellArena; }

    [[nodiscard]] int lineCount() const { return static_cast<int>(m_lines.size()); }
    /// An index that is none is reported as a diagnostic, and clamped.
    [[nodiscard]] const BufferLine& lineAt(int index) const { return *m_lines[checked(index)]; }
    [[nodiscard]] BufferLine& lineAt(int index) { return *m_lines[checked(index)]; }
    [[nodiscard]] BufferLine& line(int row) { return lineAt(m_yBase + row); }
    [[nodiscard]] const BufferLine& line(int row) const { return lineAt(m_yBase + row); }
    /// Lines of history.
    [[nodiscard]] int yBase() const { return m_yBase; }
    /// The first line that is shown: below yBase when someone looks at the history.
    [[nodiscard]] int yDisp() const { return m_yDisp; }
    void setYDisp(int yDisp);
    [[nodiscard]] std::uint64_t trimmedCount() const { return m_trimmedCount; }

    // The cursor. When the last column was written, the cursor stays there and wraps with the next character.
    [[nodiscard]] int x() const { return m_x; }
    [[nodiscard]] int y() const { return m_y; }
    [[nodiscard]] bool pendingWrap() const { return m_pendingWrap; }
    void setPendingWrap(bool pending) { m_pendingWrap = pending; }
    /// Clamped to the screen.
    void setCursor(int x, int y) {
        m_y = std::clamp(y, 0, m_rows - 1);
        m_x = std::clamp(x, 0, lastColumn(m_y));
        m_pendingWrap = false;
    }
    void setX(int x) { setCursor(x, m_y); }

    [[nodiscard]] int scrollTop() const { return m_scrollTop; }
    [[nodiscard]] int scrollBottom() const { return m_scrollBottom; }
    void setScrollRegion(int top, int bottom);
    [[nodiscard]] int marginLeft() const { return marginMode ? m_marginLeft : 0; }
    [[nodiscard]] int marginRight() const { return marginMode ? m_marginRight : m_cols - 1; }
    void setMargins(int left, int right);
    void resetMargins();
    /// Whether the cursor is between the margins, on all sides.
    [[nodiscard]] bool isInsideMargins() const {
        return m_y >= m_scrollTop && m_y <= m_scrollBottom && m_x >= marginLeft() && m_x <= marginRight();
    }

    bool insertMode = false;
    bool marginMode = false;
    bool wraparound = true;
    bool reverseWraparound = false;
    bool extendedReverseWraparound = false;
    SavedCursor saved;
    SemanticState semantic;
    std::uint8_t defaultBidiState = 0;
    LineObserver* lineObserver = nullptr;
    bool tellsLosses = false;

    // Writing at the cursor (Buffer+Write.cpp).
    void insertAsciiRun(std::span<const std::uint8_t> text, const Pen& pen) {
        const bool isPlain = (m_lastScalar & joinsNext) == 0 &&
                             !(m_pendingWrap | insertMode | marginMode | m_hasDoubleLines | tellsLosses);
        if (isPlain && text.size() - 1 < static_cast<std::size_t>(m_cols - 1 - m_x)) [[likely]] {
            m_lastScalar = text.back();
            const int columns = static_cast<int>(text.size());
            BufferLine& target = line(m_y);
            const int x = m_x;
            m_x += columns;
            if (x == target.usedLength() || m_ops.expandAsciiBehind == nullptr) {
                m_ops.expandAscii(&target.write(x, columns)->rawValue, text.data(), text.size(), pen.bits);
                return;
            }
            const auto [cells, gap] = target.writeBehindGap(x, columns);
            m_ops.expandAsciiBehind(
                &cells->rawValue, gap, target.tailBlankCell().rawValue, text.data(), text.size(), pen.bits);
            return;
        }
        insertWrappingAscii(text, pen);
    }
    void insertScalarRun(std::span<const char32_t> text, const Pen& pen, ClusterMode mode);
    /// Before cells from a column on, or up to it, change: a wide character on both sides of it goes.
    void tellCut(int row, int col) {
        if (tellsLosses) [[unlikely]] {
            tellWideLost(row, col);
        }
    }
    /// A cell of width 1 or 2.
    void insertCharacter(PackedCell cell, const Pen& pen);
    /// The last character that was written, 0 at first.
    [[nodiscard]] char32_t lastScalar() const { return m_lastScalar & ~joinsNext; }
    void forgetLastScalar() { m_lastScalar = 0; }
    /// REP: none of them joins another one.
    void repeatScalar(char32_t scalar, int count, const Pen& pen);

    // Moving (Buffer+Scroll.cpp).
    /// One row down, scrolling at the bottom margin.
    void index(const Pen& pen);
    void reverseIndex(const Pen& pen);
    void scrollUp(int count, const Pen& pen);
    void scrollDown(int count, const Pen& pen);
    /// Within the margins, from the row of the cursor on, as IL and DL.
    void insertLines(int count, const Pen& pen);
    void deleteLines(int count, const Pen& pen);
    void insertColumns(int col, int count, const Pen& pen);
    void deleteColumns(int col, int count, const Pen& pen);

    /// The cells of a row, with what the erase does to soft wraps.
    void eraseCells(int row, int first, int end, PackedCell blank);
    void eraseUnprotected(int row, int first, int end, PackedCell blank);
    void clearHistory();
    /// As at the beginning: no history, blank lines, no margins.
    void clear(PackedCell blank = {});

    void setTabStop(int col);
    [[nodiscard]] bool isTabStop(int col) const { return m_tabStops[static_cast<std::size_t>(col)]; }
    void clearTabStop(int col);
    void clearAllTabStops();
    /// Every `width` columns; 0: nowhere.
    void setupTabStops(int width);
    void setupTabStops() { setupTabStops(m_setup.tabStopWidth); }
    void copyTabStops(const Buffer& from) { m_tabStops = from.m_tabStops; }
    [[nodiscard]] int nextTabStop(int col) const;
    [[nodiscard]] int previousTabStop(int col) const;

    /// The `places` follow the characters that they stand on; a column as big as the width is behind a full line.
    void resize(int newCols, int newRows, std::span<LinePlace> places = {});
    void changeHistorySize(int scrollback);

    void mark(CellArena::Marker& marker) const;
    /// The screen is kept.
    void coarsen(CellArena::Coarsening& coarsening);
    void release(CellArena::Releasing& releasing);
    /// The last column of a row: double-width lines have half of them.
    [[nodiscard]] int lastColumn(int row) const { return m_hasDoubleLines ? lastColumn(line(row)) : m_cols - 1; }
    [[nodiscard]] int lastColumn(const BufferLine& line) const {
        return line.renderMode() == RenderLineMode::single ? m_cols - 1 : std::max(m_cols / 2 - 1, 0);
    }
    void setLineMode(int row, RenderLineMode mode);
    [[nodiscard]] std::unique_ptr<BufferLine> getBlankLine(PackedCell blank);

private:
    [[nodiscard]] std::size_t checked(int index) const {
        return static_cast<std::size_t>(index) < m_lines.size() ? static_cast<std::size_t>(index) : indexInside(index);
    }
    [[nodiscard]] std::size_t indexInside(int index) const;
    void checkWidths(int first);
    /// Of `m_lastScalar`: a Prepend, which joins what comes next, though that begins a cluster by itself elsewhere.
    static constexpr char32_t joinsNext = 0x8000'0000;
    void insertWrappingAscii(std::span<const std::uint8_t> text, const Pen& pen);
    void insertBehindPrepend(char32_t scalar, const Pen& pen);
    [[nodiscard]] bool insertsAtCursor() const;
    void insertCells(int count, int right, const Pen& pen);
    /// The last column that the cursor can write before it wraps; `target` is its line.
    [[nodiscard]] int rightLimit(const BufferLine& target) const {
        const int last = lastColumn(target);
        const int limit = marginMode && m_x <= m_marginRight ? std::min(m_marginRight, last) : last;
        return std::max(limit, m_x);
    }
    void wrap(const Pen& pen);
    [[nodiscard]] bool canWrapWide(int right) const { return wraparound && right > (marginMode ? m_marginLeft : 0); }
    std::size_t insertSimpleScalars(std::span<const char32_t> text, const Pen& pen);
    void putScalar(char32_t scalar, int width, const Pen& pen);
    int fillLine(PackedCell cell, int count, const Pen& pen);
    int scrollAhead(int count, int width, const Pen& pen);
    std::size_t putClustered(std::span<const char32_t> text, const Pen& pen, ClusterMode mode);
    std::size_t joinCluster(std::span<const char32_t> text, int col, const Pen& pen, ClusterMode mode);
    [[nodiscard]] int columnBeforeCursor() const;
    void widen(int col, const Pen& pen);
    void pushLine(int above, PackedCell blank);
    /// As a new line.
    void renew(BufferLine& line, PackedCell blank) {
        line.recycle(m_cols, blank, nextIdentity());
        line.setBidiState(defaultBidiState);
    }
    void scrollRegionUp(int top, int bottom, int count, PackedCell blank);
    void scrollRegionDown(int top, int bottom, int count, PackedCell blank);
    void moveColumnsVertically(int top, int bottom, int count, PackedCell blank);
    /// Columns, the end excluded, and the empty cell that all of them are.
    struct BlankColumns {
        int left = 0;
        int right = 0;
        PackedCell blank;
        bool operator==(const BlankColumns&) const = default;
    };
    [[nodiscard]] bool isBlank(int row, const BlankColumns& columns);
    template <typename Move>
    void moveColumns(int col, PackedCell blank, const Move& move);
    void tellWideLost(int row, int col);
    void tellMoved(int top, int bottom, int left, int right, int by);
    void cutOrExtend(int cols);
    void reflow(int cols, int rows, std::span<LinePlace> places);
    [[nodiscard]] std::int64_t roomFor(int rows) const;
    [[nodiscard]] int linesWithoutRoom(int cols, int rows, int last) const;
    void resizeRows(int rows);
    void resizeTabStops(int cols);
    void fillRows();
    [[nodiscard]] int lastLineInUse() const;
    RenderIdentity nextIdentity() { return m_cellArena->nextLineIdentity(); }

    std::shared_ptr<CellArena> m_cellArena;
    Setup m_setup;
    const VectorOps& m_ops;
    int m_cols;
    int m_rows;
    CircularBufferLineList m_lines;
    int m_x = 0;
    int m_y = 0;
    bool m_pendingWrap = false;
    bool m_hasDoubleLines = false; ///< there may be some
    int m_yBase = 0;
    int m_yDisp = 0;
    int m_scrollTop = 0;
    int m_scrollBottom;
    int m_marginLeft = 0;
    int m_marginRight;
    char32_t m_lastScalar = 0; ///< with `joinsNext`
    std::uint64_t m_trimmedCount = 0;
    std::uint64_t m_coarseEnd = 0; ///< the lines before this number are coarse
    std::vector<bool> m_tabStops;
    struct Nothing {};
    RowMemo<BlankColumns, Nothing> m_blankColumns; ///< as margins left them
};

} // namespace term
