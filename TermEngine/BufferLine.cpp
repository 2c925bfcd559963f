#include "TermEngine/BufferLine.h"

#include "TermEngine/Diagnostics.h"

#include <algorithm>
#include <cstring>

namespace term {
namespace {

/// What is left of a cell when its other half goes: its colours.
PackedCell emptied(PackedCell cell) {
    if (cell.isEmpty()) {
        return cell.with(WidthState::narrow);
    }
    return PackedCell(cell.rawValue & PackedCell::attributeMask);
}

/// At the edges of cells that came from elsewhere: half of a wide character is none.
void emptyHalves(std::span<PackedCell> cells) {
    if (cells.front().isSpacer()) {
        cells.front() = emptied(cells.front());
    }
    if (cells.back().isWide()) {
        cells.back() = emptied(cells.back());
    }
}

void reportOutside() {
    logDiagnostic("BufferLine: You passed an index out of range, adjusting to prevent crash, but you should debug");
}

} // namespace

BufferLine::BufferLine(const BufferLine& other)
    : m_cells(std::make_unique_for_overwrite<PackedCell[]>(static_cast<std::size_t>(other.m_usedLength))),
      m_capacity(other.m_usedLength),
      m_cols(other.m_cols),
      m_usedLength(other.m_usedLength),
      m_isWrapped(other.m_isWrapped),
      m_hasWide(other.m_hasWide),
      m_renderMode(other.m_renderMode),
      m_bidiState(other.m_bidiState),
      m_tailBlankCell(other.m_tailBlankCell),
      m_generation(other.m_generation),
      m_renderIdentity(other.m_renderIdentity),
      m_recycleGeneration(other.m_recycleGeneration),
      m_semanticMarks(other.m_semanticMarks),
      m_semanticHardContinuationGroup(other.m_semanticHardContinuationGroup) {
    std::copy_n(other.m_cells.get(), m_usedLength, m_cells.get());
}

[[gnu::cold]] PackedCell BufferLine::cellOutside(int col) const {
    reportOutside();
    return m_cols > 0 ? (*this)[std::clamp(col, 0, m_cols - 1)] : m_tailBlankCell;
}

[[gnu::cold]] PackedCell* BufferLine::writeOutside(int col, int count) {
    reportOutside();
    count = std::max(count, 0);
    if (count <= m_cols) {
        return write(std::clamp(col, 0, m_cols - count), count);
    }
    // More than the line has: the caller writes past its end, into cells that are none of it.
    ++m_generation;
    if (count > m_capacity) {
        grow(count);
    }
    m_usedLength = m_cols;
    return m_cells.get();
}

void BufferLine::setSemanticMark(const SemanticMarks& marks) {
    m_semanticMarks = marks;
    ++m_generation;
}

[[gnu::cold]] void BufferLine::grow(int capacity) {
    auto cells = std::make_unique_for_overwrite<PackedCell[]>(static_cast<std::size_t>(capacity));
    std::copy_n(m_cells.get(), m_usedLength, cells.get());
    m_cells = std::move(cells);
    m_capacity = capacity;
}

void BufferLine::reserve(int col, int end) {
    ++m_generation;
    if (end > m_capacity) {
        grow(std::max(m_cols, end));
    }
    if (col > m_usedLength) {
        // In large blocks, of which there is mostly one: how many there are nobody can foretell. Past the last cell
        // there is nothing yet that they could overwrite.
        constexpr int block = 32;
        const PackedCell blank = m_tailBlankCell; // which no store here can change
        PackedCell* const cells = m_cells.get();
        const int lastBlock = m_capacity - block;
        int at = m_usedLength;
        if (at <= lastBlock) {
            for (; at < col; at += block) {
                std::fill_n(cells + std::min(at, lastBlock), block, blank);
            }
        }
        for (; at < col; ++at) {
            cells[at] = blank;
        }
    }
    m_usedLength = std::max(m_usedLength, end);
}

/// A wide character that stands on both sides of the column is no more.
void BufferLine::cutWide(int col) {
    if (col <= 0 || col >= m_usedLength || !m_cells[static_cast<std::size_t>(col)].isSpacer()) {
        return;
    }
    PackedCell* const cells = m_cells.get();
    cells[col - 1] = emptied(cells[col - 1]);
    cells[col] = emptied(cells[col]);
}

/// The first half is written over already.
void BufferLine::dropSpacer(int col) {
    PackedCell& cell = m_cells[static_cast<std::size_t>(col)];
    if (cell.isSpacer()) {
        cell = emptied(cell);
    }
}

void BufferLine::replace(int col, PackedCell cell) {
    if (!isWithin(col, 1)) [[unlikely]] {
        *writeOutside(col, 1) = cell;
        return;
    }
    reserve(col, col + 1);
    m_cells[static_cast<std::size_t>(col)] = cell;
}

std::span<PackedCell> BufferLine::edit(int first, int end) {
    if (first < 0 || first > end || end > m_cols) [[unlikely]] {
        reportOutside();
        return {};
    }
    reserve(end, end);
    return {m_cells.get() + first, static_cast<std::size_t>(end - first)};
}

void BufferLine::fill(int first, int end, PackedCell cell) {
    if (first >= end) {
        return;
    }
    if (first < 0 || end > m_cols) [[unlikely]] {
        reportOutside();
        fill(std::max(first, 0), std::min(end, m_cols), cell);
        return;
    }
    if (end >= m_cols && cell.isEmpty()) {
        fillRest(first, cell);
        return;
    }
    fillCells(write(first, end - first), end - first, cell);
}

/// Of cells that are used. Written so that it takes several of them at once: both fields stand in the upper half.
BufferLine::Protection BufferLine::protectionOf(int first, int end) const {
    constexpr std::uint32_t bit = std::uint32_t{1} << (PackedCell::protectedShift - 32);
    constexpr int spacerShift = PackedCell::protectedShift - PackedCell::widthShift;
    const PackedCell* const cells = m_cells.get();
    const auto upper = [cells](int col) { return static_cast<std::uint32_t>(cells[col].rawValue >> 32); };
    std::uint32_t all = first < end ? upper(first) : 0;
    std::uint32_t split = 0;
    for (int col = first + 1; col < end; ++col) {
        // Of the two bits of its width a spacer has the upper one alone.
        const std::uint32_t isSpacer = upper(col) << (spacerShift - 1) & ~(upper(col) << spacerShift);
        all |= upper(col);
        split |= isSpacer & (upper(col) ^ upper(col - 1));
    }
    return {(all & bit) != 0, (split & bit) != 0};
}

void BufferLine::fillUnprotected(int first, int end, PackedCell cell) {
    // The tail has no protected cells.
    const int used = std::clamp(m_usedLength, first, std::max(first, end));
    const auto [isProtected, isSplit] = protectionOf(first, used);
    if (!isProtected) {
        fill(first, end, cell);
        return;
    }
    if (!isSplit) {
        if (m_hasWide && !(*this)[first].isProtected()) {
            cutWide(first);
        }
        if (m_hasWide && !(*this)[used - 1].isProtected()) {
            cutWide(used);
        }
        for (PackedCell& each : edit(first, used)) {
            const std::uint64_t keep = std::uint64_t{0} - (each.rawValue >> PackedCell::protectedShift & 1);
            each.rawValue = (each.rawValue & keep) | (cell.rawValue & ~keep);
        }
        fill(used, end, cell);
        return;
    }
    while (first < end) {
        const int begin = first;
        while (first < end && !(*this)[first].isProtected()) {
            first = first < m_usedLength ? first + 1 : end;
        }
        fill(begin, first, cell);
        for (; first < end && (*this)[first].isProtected();) {
            ++first;
        }
    }
}

bool BufferLine::isFilledWith(int first, int end, PackedCell blank) const {
    const auto at = [this](int col) { return m_cells[static_cast<std::size_t>(col)]; };
    if (end > m_usedLength || at(first) != blank || at(end - 1) != blank) {
        return false;
    }
    // Each is the one before it.
    const PackedCell* const cells = m_cells.get() + first;
    return std::memcmp(cells, cells + 1, static_cast<std::size_t>(end - first - 1) * sizeof(PackedCell)) == 0;
}

void BufferLine::insertPackedCells(int col, int count, int end, PackedCell blank) {
    count = std::min(count, end - col);
    if (count <= 0) {
        return;
    }
    if (isFilledWith(col, end, blank)) {
        return;
    }
    cutWide(col);
    cutWide(end);
    cutWide(end - count);
    if (end >= m_cols && blank == m_tailBlankCell) {
        // Of the tail nothing has to be there.
        if (col >= m_usedLength) {
            ++m_generation;
            return;
        }
        end = std::min(end, m_usedLength + count);
    }
    reserve(end, end);
    PackedCell* const cells = m_cells.get();
    std::memmove(cells + col + count, cells + col, static_cast<std::size_t>(end - col - count) * sizeof(PackedCell));
    fillCells(cells + col, count, blank);
}

void BufferLine::deleteCells(int col, int count, int end, PackedCell blank) {
    count = std::min(count, end - col);
    if (count <= 0) {
        return;
    }
    if (isFilledWith(col, end, blank)) {
        return;
    }
    cutWide(col);
    cutWide(col + count);
    cutWide(end);
    const bool shortens = end >= m_cols && blank == m_tailBlankCell;
    if (shortens) {
        // What comes in is the tail.
        if (col >= m_usedLength) {
            ++m_generation;
            return;
        }
        end = m_usedLength;
        count = std::min(count, end - col);
    }
    reserve(end, end);
    PackedCell* const cells = m_cells.get();
    std::memmove(cells + col, cells + col + count, static_cast<std::size_t>(end - col - count) * sizeof(PackedCell));
    if (shortens) {
        m_usedLength = end - count;
    } else {
        fillCells(cells + end - count, count, blank);
    }
}

void BufferLine::copyFrom(const BufferLine& src, int srcCol, int dstCol, int len) {
    if (len <= 0) {
        return;
    }
    if (&src == this) {
        if (isWithin(srcCol, len) && isWithin(dstCol, len)) [[likely]] {
            moveCells(srcCol, dstCol, len);
        } else {
            copyFrom(BufferLine(src), srcCol, dstCol, len);
        }
        return;
    }
    m_hasWide = m_hasWide || src.m_hasWide;
    PackedCell* const cells = write(dstCol, len);
    int copied = 0;
    if (src.isWithin(srcCol, len) && src.m_usedLength > srcCol) {
        copied = std::min(src.m_usedLength - srcCol, len);
        std::copy_n(src.m_cells.get() + srcCol, copied, cells);
    }
    for (; copied < len; ++copied) {
        cells[copied] = src[srcCol + copied];
    }
    emptyHalves({cells, static_cast<std::size_t>(len)});
}

void BufferLine::swapCells(BufferLine& other, int first, int end) {
    const int used = std::max({m_usedLength, other.m_usedLength, end});
    m_hasWide = other.m_hasWide = m_hasWide || other.m_hasWide;
    for (BufferLine* line : {this, &other}) {
        line->reserve(used, used);
        if (m_hasWide) {
            line->cutWide(first);
            line->cutWide(end);
        }
    }
    std::swap(m_cells, other.m_cells);
    std::swap(m_capacity, other.m_capacity);
    std::swap_ranges(m_cells.get(), m_cells.get() + first, other.m_cells.get());
    std::swap_ranges(m_cells.get() + end, m_cells.get() + used, other.m_cells.get() + end);
}

/// Within the line; both places may overlap.
void BufferLine::moveCells(int from, int to, int len) {
    const int copied = std::clamp(m_usedLength - from, 0, len);
    reserve(to, to + len);
    PackedCell* const cells = m_cells.get() + to;
    std::memmove(cells, m_cells.get() + from, static_cast<std::size_t>(copied) * sizeof(PackedCell));
    fillCells(cells + copied, len - copied, m_tailBlankCell);
    emptyHalves({cells, static_cast<std::size_t>(len)});
    if (to > 0 && cells[-1].isWide()) {
        cells[-1] = emptied(cells[-1]);
    }
    if (to + len < m_usedLength) {
        dropSpacer(to + len);
    }
}

void BufferLine::resize(int cols) {
    ++m_generation;
    if (m_usedLength > cols) {
        if (m_hasWide) {
            cutWide(cols);
        }
        m_usedLength = cols;
    }
    m_cols = cols;
}

void BufferLine::shrinkToFit() {
    if (m_capacity > m_usedLength + 8) {
        grow(m_usedLength);
    }
}

int BufferLine::getTrimmedLength() const {
    int length = m_usedLength;
    while (length > 0 && m_cells[static_cast<std::size_t>(length - 1)].isBlank()) {
        --length;
    }
    return length;
}

std::string BufferLine::translateToString(const CellArena& arena, bool trim, int first, int end) const {
    end = end < 0 ? m_cols : std::min(end, m_cols);
    if (trim) {
        end = std::min(end, getTrimmedLength());
    }
    std::string text;
    for (int col = std::max(first, 0); col < end; ++col) {
        const PackedCell cell = (*this)[col];
        if (!cell.isSpacer()) {
            arena.appendText(text, cell);
        }
    }
    return text;
}

} // namespace term
