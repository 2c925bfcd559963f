#pragma once

#include "TermEngine/CellArena.h"
#include "TermEngine/PackedCell.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace term {

/// DECSWL, DECDWL, DECDHL.
enum class RenderLineMode : std::uint8_t { single, doubleWidth, doubledTop, doubledDown };

/// The marks that a shell put on a line (OSC 133).
struct SemanticMarks {
    bool promptStart = false;
    bool inputStart = false;
    bool outputStart = false;
    bool commandEnd = false;
    std::optional<int> exitCode{}; ///< of the command that ended here

    bool operator==(const SemanticMarks&) const = default;
    [[nodiscard]] bool any() const { return promptStart || inputStart || outputStart || commandEnd; }
    /// Of a line that another one was joined to.
    [[nodiscard]] SemanticMarks operator|(const SemanticMarks& later) const {
        return {
            promptStart || later.promptStart, inputStart || later.inputStart, outputStart || later.outputStart,
            commandEnd || later.commandEnd, later.exitCode ? later.exitCode : exitCode};
    }
};

/// One line of a screen or of its history. Cells past the used ones are all the tail blank, so that a fresh line
/// costs nothing, and memory is there from the first write on.
class BufferLine {
public:
    explicit BufferLine(int cols, PackedCell blank = {}) : m_cols(cols), m_tailBlankCell(blank) {}
    BufferLine(const BufferLine& other);
    BufferLine& operator=(const BufferLine&) = delete;

    [[nodiscard]] int size() const { return m_cols; }
    [[nodiscard]] int usedLength() const { return m_usedLength; }
    [[nodiscard]] PackedCell tailBlankCell() const { return m_tailBlankCell; }
    /// A column that is none is reported as a diagnostic, and clamped.
    [[nodiscard]] PackedCell operator[](int col) const {
        if (static_cast<unsigned>(col) < static_cast<unsigned>(m_usedLength)) [[likely]] {
            return m_cells[static_cast<std::size_t>(col)];
        }
        return static_cast<unsigned>(col) < static_cast<unsigned>(m_cols) ? m_tailBlankCell : cellOutside(col);
    }
    [[nodiscard]] std::span<const PackedCell> usedCells() const {
        return {m_cells.get(), static_cast<std::size_t>(m_usedLength)};
    }
    /// Changes with every change of the line: what was drawn of it is stale.
    [[nodiscard]] std::uint64_t generation() const { return m_generation; }
    /// Two lines of a terminal have different ones, whichever screen they are on; a line that is reused gets a new one.
    [[nodiscard]] RenderIdentity renderIdentity() const { return m_renderIdentity; }
    void setRenderIdentity(RenderIdentity identity) { m_renderIdentity = identity; }
    [[nodiscard]] std::uint32_t recycleGeneration() const { return m_recycleGeneration; }

    /// The line continues the one above: a soft wrap.
    [[nodiscard]] bool isWrapped() const { return m_isWrapped; }
    void setWrapped(bool wrapped) {
        m_generation += m_isWrapped != wrapped ? 1 : 0;
        m_isWrapped = wrapped;
    }
    [[nodiscard]] RenderLineMode renderMode() const { return m_renderMode; }
    void setRenderMode(RenderLineMode mode) {
        m_generation += m_renderMode != mode ? 1 : 0;
        m_renderMode = mode;
    }
    [[nodiscard]] std::uint8_t bidiState() const { return m_bidiState; }
    void setBidiState(std::uint8_t state) {
        m_generation += m_bidiState != state ? 1 : 0;
        m_bidiState = state;
    }
    [[nodiscard]] const SemanticMarks& semanticMarks() const { return m_semanticMarks; }
    void setSemanticMark(const SemanticMarks& marks);
    /// The prompt (`SemanticState::activeGroup`) whose text goes on here behind a line feed; 0: none.
    [[nodiscard]] std::uint32_t semanticHardContinuationGroup() const { return m_semanticHardContinuationGroup; }
    void setSemanticHardContinuationGroup(std::uint32_t group) { m_semanticHardContinuationGroup = group; }
    /// What a shell has said of the text of the line, which is gone.
    void forgetPrompt() {
        if (m_semanticMarks.any() || m_semanticHardContinuationGroup != 0) [[unlikely]] {
            setSemanticMark({});
            m_semanticHardContinuationGroup = 0;
        }
    }

    /// Room for cells that the caller writes at once, all of them: the halves of wide characters that it cuts become
    /// blank. What is not within the line is reported as a diagnostic; then the room is elsewhere in it.
    PackedCell* write(int col, int count) {
        if (!isWithin(col, count)) [[unlikely]] {
            return writeOutside(col, count);
        }
        if (m_hasWide) {
            cutWide(col);
            cutWide(col + count);
        }
        if (col <= m_usedLength && col + count <= m_capacity) [[likely]] {
            ++m_generation;
            m_usedLength = std::max(m_usedLength, col + count);
        } else {
            reserve(col, col + count);
        }
        return m_cells.get() + col;
    }
    /// The same, for a caller that also makes the `gap` cells in front of them the tail blank, where that is positive.
    struct RoomBehindGap {
        PackedCell* cells;
        std::ptrdiff_t gap;
    };
    RoomBehindGap writeBehindGap(int col, int count) {
        const int used = m_usedLength;
        if (m_hasWide || !isWithin(col, count) || col + count > m_capacity) [[unlikely]] {
            return {write(col, count), 0};
        }
        ++m_generation;
        m_usedLength = std::max(used, col + count);
        return {m_cells.get() + col, col - used};
    }
    /// All cells from `col` on, to write a run whose end shows only later: `endRun` has to follow.
    PackedCell* beginRun(int col) {
        if (m_hasWide) {
            cutWide(col);
        }
        if (col <= m_usedLength && m_capacity >= m_cols) [[likely]] {
            ++m_generation;
        } else {
            reserve(col, col);
            if (m_capacity < m_cols) {
                grow(m_cols);
            }
        }
        return m_cells.get();
    }
    void endRun(int end) {
        if (m_hasWide && end < m_usedLength) {
            dropSpacer(end);
        }
        m_usedLength = std::max(m_usedLength, end);
    }
    /// Says that there is a wide character.
    void noteWide() { m_hasWide = true; }
    [[nodiscard]] bool hasWide() const { return m_hasWide; }

    void set(int col, PackedCell cell) { *write(col, 1) = cell; }
    /// Without a look at wide characters.
    void replace(int col, PackedCell cell);
    /// Cells to change where they are, without a look at wide characters.
    [[nodiscard]] std::span<PackedCell> edit(int first, int end);
    void fill(int first, int end, PackedCell cell);
    /// From a column of the line to its end, with an empty cell: it becomes the tail, unless there is another blank
    /// before it.
    void fillRest(int first, PackedCell blank) {
        if (m_hasWide) {
            cutWide(first);
        }
        if (first > m_usedLength && blank != m_tailBlankCell) {
            reserve(first, first);
        }
        m_usedLength = std::min(m_usedLength, first);
        m_tailBlankCell = blank;
        m_hasWide = m_hasWide && m_usedLength > 0;
        ++m_generation;
    }
    /// Nothing but blank cells, and nothing that was said of its text or of how it is shown.
    void clear(PackedCell blank) {
        m_usedLength = 0;
        m_tailBlankCell = blank;
        m_isWrapped = false;
        m_hasWide = false;
        m_renderMode = RenderLineMode::single;
        ++m_generation;
        forgetPrompt();
    }
    /// Blank cells between the protected ones.
    void fillUnprotected(int first, int end, PackedCell cell);
    /// Moves the cells of [col, end) to the right by `count`; those that leave it at the end are lost.
    void insertPackedCells(int col, int count, int end, PackedCell blank);
    void deleteCells(int col, int count, int end, PackedCell blank);
    /// Whether all of these are used and the same blank, so that to move them changes nothing.
    [[nodiscard]] bool isFilledWith(int first, int end, PackedCell blank) const;
    void copyFrom(const BufferLine& src, int srcCol, int dstCol, int len);
    /// Of two lines, the cells from `first` to `end` take each other's places. Fast where these are most of the line.
    void swapCells(BufferLine& other, int first, int end);
    /// As new, for another place.
    void recycle(int cols, PackedCell blank, RenderIdentity identity) {
        m_cols = cols;
        m_usedLength = 0;
        m_tailBlankCell = blank;
        m_isWrapped = false;
        m_hasWide = false;
        m_renderMode = RenderLineMode::single;
        m_bidiState = 0;
        m_semanticMarks = {};
        m_semanticHardContinuationGroup = 0;
        m_renderIdentity = identity;
        ++m_recycleGeneration;
        ++m_generation;
    }
    /// Cells past the new width are lost, a wide character that would be cut too.
    void resize(int cols);
    /// Gives the memory back that the line does not need.
    void shrinkToFit();

    /// How many cells there are up to the last that was written and not erased.
    [[nodiscard]] int getTrimmedLength() const;
    [[nodiscard]] bool hasContent() const { return getTrimmedLength() > 0; }
    /// UTF-8; without the blank tail when `trim`.
    [[nodiscard]] std::string translateToString(const CellArena& arena, bool trim, int first = 0, int end = -1) const;

private:
    [[nodiscard]] bool isWithin(int col, int count) const {
        return static_cast<unsigned>(col) <= static_cast<unsigned>(m_cols) &&
               static_cast<unsigned>(count) <= static_cast<unsigned>(m_cols - col);
    }
    [[nodiscard]] PackedCell cellOutside(int col) const;
    PackedCell* writeOutside(int col, int count);
    void reserve(int col, int end);
    void grow(int capacity);
    void cutWide(int col);
    void dropSpacer(int col);
    void moveCells(int from, int to, int len);
    struct Protection {
        bool isAny = false;
        bool isSplit = false; ///< one half of a wide character has it, the other one has not
    };
    [[nodiscard]] Protection protectionOf(int first, int end) const;

    std::unique_ptr<PackedCell[]> m_cells;
    int m_capacity = 0;
    int m_cols;
    int m_usedLength = 0;
    bool m_isWrapped = false;
    bool m_hasWide = false;
    RenderLineMode m_renderMode = RenderLineMode::single;
    std::uint8_t m_bidiState = 0;
    PackedCell m_tailBlankCell;
    std::uint64_t m_generation = 0;
    RenderIdentity m_renderIdentity = 0;
    std::uint32_t m_recycleGeneration = 0;
    SemanticMarks m_semanticMarks;
    std::uint32_t m_semanticHardContinuationGroup = 0;
};

} // namespace term
