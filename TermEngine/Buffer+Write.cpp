#include "TermEngine/Buffer.h"

#include <algorithm>
#include <array>

namespace term {

using unicode::GraphemeBreak;
using unicode::Properties;

namespace {

/// Joins whatever cluster it stands behind, and does nothing else.
bool isPlainMark(char32_t scalar) {
    const Properties properties = unicode::properties(scalar);
    return properties.width() == 0 && properties.graphemeBreak() == GraphemeBreak::extend &&
           scalar != unicode::emojiSelector;
}

} // namespace

/// IRM, which has no effect beside the left and right margins.
bool Buffer::insertsAtCursor() const {
    return insertMode && m_x >= marginLeft() && m_x <= marginRight();
}

/// At the cursor; what is moved past `right` is lost.
void Buffer::insertCells(int count, int right, const Pen& pen) {
    if (lineObserver != nullptr) {
        lineObserver->cellsMoved(*this, m_x, count);
    }
    line(m_y).insertPackedCells(m_x, count, right + 1, pen.blank);
}

void Buffer::wrap(const Pen& pen) {
    const bool isWhole = !marginMode || (m_marginLeft == 0 && m_marginRight == m_cols - 1);
    m_pendingWrap = false;
    const bool moves = m_y == m_scrollBottom || m_y < m_rows - 1;
    index(pen);
    m_x = marginLeft();
    if (moves && isWhole) {
        line(m_y).setWrapped(true);
    }
}

void Buffer::insertWrappingAscii(std::span<const std::uint8_t> text, const Pen& pen) {
    if (text.empty()) {
        return;
    }
    if ((m_lastScalar & joinsNext) != 0) [[unlikely]] {
        insertBehindPrepend(text.front(), pen);
        text = text.subspan(1);
        if (text.empty()) {
            return;
        }
    }
    m_lastScalar = text.back();
    while (!text.empty()) {
        if (m_pendingWrap) {
            if (wraparound) {
                wrap(pen);
            }
            m_pendingWrap = false;
        }
        BufferLine& target = line(m_y);
        const int right = rightLimit(target);
        // What is inserted begins at the left margin.
        const int end = insertMode && m_x < marginLeft() ? std::min(marginLeft(), right + 1) : right + 1;
        const auto count = std::min(text.size(), static_cast<std::size_t>(end - m_x));
        const int columns = static_cast<int>(count);
        if (insertsAtCursor()) {
            insertCells(columns, right, pen);
        }
        tellCut(m_y, m_x);
        tellCut(m_y, m_x + columns);
        m_ops.expandAscii(&target.write(m_x, columns)->rawValue, text.data(), count, pen.bits);
        m_x += columns;
        if (m_x > right) {
            m_x = right;
            m_pendingWrap = true;
        }
        text = text.subspan(count);
        if (m_pendingWrap && !wraparound && !text.empty()) {
            // All that follows is written over the last column.
            target.set(right, PackedCell::make(PackedCell::Kind::scalar, text.back(), pen.bits));
            return;
        }
    }
}

void Buffer::insertScalarRun(std::span<const char32_t> text, const Pen& pen, ClusterMode mode) {
    while (!text.empty()) {
        if ((m_lastScalar & joinsNext) != 0) [[unlikely]] {
            insertBehindPrepend(text.front(), pen);
            text = text.subspan(1);
            continue;
        }
        if (!m_pendingWrap && !insertMode) {
            text = text.subspan(insertSimpleScalars(text, pen));
            if (text.empty()) {
                return;
            }
        }
        const char32_t scalar = text.front();
        const Properties properties = unicode::properties(scalar);
        if (properties.startsCluster() && properties.width() > 0) {
            putScalar(scalar, properties.width(), pen);
            text = text.subspan(1);
        } else {
            text = text.subspan(putClustered(text, pen, mode));
        }
    }
}

void Buffer::insertBehindPrepend(char32_t scalar, const Pen& pen) {
    const Properties properties = unicode::properties(scalar);
    m_lastScalar = scalar;
    putClustered({&scalar, 1}, pen, ClusterMode::graphemes);
    if (properties.graphemeBreak() == GraphemeBreak::prepend) {
        m_lastScalar |= joinsNext;
    }
}

/// Those at the front that begin a cluster each and fit into the line.
std::size_t Buffer::insertSimpleScalars(std::span<const char32_t> text, const Pen& pen) {
    BufferLine& target = line(m_y);
    const int right = rightLimit(target);
    if (target.hasWide() && target[m_x].isSpacer()) [[unlikely]] {
        // The wide character is cut only by what is written over its half.
        const Properties properties = unicode::properties(text.front());
        if (!properties.startsCluster() || properties.width() == 0 || m_x + properties.width() - 1 > right) {
            return 0;
        }
    }
    tellCut(m_y, m_x);
    PackedCell* const cells = target.beginRun(m_x);
    bool hasWide = false;
    int x = m_x;
    std::size_t count = 0;
    while (count < text.size() && x <= right) {
        const ExpandedText run = m_ops.expandScalars(
            &cells[x].rawValue, text.data() + count, text.size() - count, static_cast<std::size_t>(right - x + 1),
            pen.bits);
        count += run.scalars;
        x += static_cast<int>(run.columns);
        hasWide = hasWide || run.hasWide;
        if (count == text.size()) {
            break;
        }
        const Properties properties = unicode::properties(text[count]);
        const int width = properties.width();
        // Behind a character of this run, of which none is a Prepend or a joiner, a pictograph begins a cluster too.
        const bool begins = properties.startsCluster() || (count > 0 && properties.isExtendedPictographic() &&
                                                           properties.graphemeBreak() == GraphemeBreak::other);
        if (!begins || width == 0 || x + width - 1 > right) {
            break;
        }
        const auto state = width == 2 ? WidthState::wide : WidthState::narrow;
        cells[x] = PackedCell::make(PackedCell::Kind::scalar, text[count], pen.bits, state);
        if (width == 2) {
            cells[x + 1] = PackedCell::make(PackedCell::Kind::scalar, 0, pen.bits, WidthState::spacer);
            hasWide = true;
        }
        x += width;
        ++count;
    }
    tellCut(m_y, x);
    target.endRun(x);
    if (hasWide) {
        target.noteWide();
    }
    if (count > 0) {
        m_lastScalar = text[count - 1];
    }
    m_pendingWrap = x > right;
    m_x = std::min(x, right);
    return count;
}

void Buffer::putScalar(char32_t scalar, int width, const Pen& pen) {
    m_lastScalar = scalar;
    const auto state = width == 2 ? WidthState::wide : WidthState::narrow;
    insertCharacter(PackedCell::make(PackedCell::Kind::scalar, scalar, pen.bits, state), pen);
}

void Buffer::repeatScalar(char32_t scalar, int count, const Pen& pen) {
    m_lastScalar = 0;
    const int width = unicode::properties(scalar).width();
    if (width == 0) {
        // It joins what stands there, as often as there is room.
        const std::u32string marks(std::min(static_cast<std::size_t>(count), CellArena::maximumClusterScalars), scalar);
        insertScalarRun(marks, pen, ClusterMode::scalars);
        return;
    }
    const auto state = width == 2 ? WidthState::wide : WidthState::narrow;
    const PackedCell cell = PackedCell::make(PackedCell::Kind::scalar, scalar, pen.bits, state);
    count = std::min(count, m_cols * (m_rows + 1) / width);
    while (count > 0) {
        if (m_pendingWrap || m_x + width - 1 > rightLimit(line(m_y))) {
            count -= scrollAhead(count, width, pen);
            insertCharacter(cell, pen);
            // The others would be written over this one.
            count = wraparound ? count - 1 : 0;
        } else {
            count -= fillLine(cell, count, pen);
        }
    }
    m_lastScalar = scalar;
}

/// Equal characters from the cursor on, as many as fit into the line; how many.
int Buffer::fillLine(PackedCell cell, int count, const Pen& pen) {
    BufferLine& target = line(m_y);
    const int width = cell.isWide() ? 2 : 1;
    const int right = rightLimit(target);
    // What is inserted begins at the left margin.
    const int end = insertMode && m_x < marginLeft() ? std::min(marginLeft(), right + 1) : right + 1;
    count = std::min(count, (end - m_x) / width);
    if (count == 0) {
        insertCharacter(cell, pen);
        return 1;
    }
    const int columns = count * width;
    if (insertsAtCursor()) {
        insertCells(columns, right, pen);
    }
    tellCut(m_y, m_x);
    tellCut(m_y, m_x + columns);
    PackedCell* const cells = target.write(m_x, columns);
    if (width == 2) {
        const PackedCell spacer = PackedCell::make(PackedCell::Kind::scalar, 0, pen.bits, WidthState::spacer);
        for (int column = 0; column < columns; column += 2) {
            cells[column] = cell;
            cells[column + 1] = spacer;
        }
        target.noteWide();
    } else {
        fillCells(cells, columns, cell);
    }
    m_x += columns;
    if (m_x > right) {
        m_x = right;
        m_pendingWrap = true;
    }
    return count;
}

/// Before so many equal characters wrap at the bottom of a region between margins, where each line that scrolls costs a
/// copy of all others: they scroll together. How many characters would be gone again at the end.
int Buffer::scrollAhead(int count, int width, const Pen& pen) {
    const bool isPart = marginMode && (m_marginLeft > 0 || m_marginRight < m_cols - 1);
    const int ofLine = (marginRight() - marginLeft() + 1) / width;
    if (!wraparound || !isPart || m_y != m_scrollBottom || !isInsideMargins() || ofLine == 0) {
        return 0;
    }
    const int height = m_scrollBottom - m_scrollTop + 1;
    const int lines = (count + ofLine - 1) / ofLine;
    const int scrolled = std::min(lines, height) - 1;
    if (scrolled > 0) {
        scrollUp(scrolled, pen);
        m_y -= scrolled;
    }
    return std::max(lines - height, 0) * ofLine;
}

void Buffer::insertCharacter(PackedCell cell, const Pen& pen) {
    if (m_pendingWrap && wraparound) {
        wrap(pen);
    }
    m_pendingWrap = false;
    int right = rightLimit(line(m_y));
    const int width = cell.isWide() ? 2 : 1;
    if (m_x + width - 1 > right) {
        // A wide character, and one column left, which stays as it is.
        if (!canWrapWide(right)) {
            return;
        }
        if (const PackedCell left = line(m_y)[m_x]; left.isBlank()) {
            line(m_y).set(m_x, left.with(WidthState::wrapPad));
        }
        wrap(pen);
        right = rightLimit(line(m_y));
        if (m_x + 1 > right) {
            return;
        }
    }
    BufferLine& target = line(m_y);
    if (insertsAtCursor()) {
        insertCells(width, right, pen);
    }
    tellCut(m_y, m_x);
    tellCut(m_y, m_x + width);
    PackedCell* const cells = target.write(m_x, width);
    cells[0] = cell;
    if (width == 2) {
        cells[1] = PackedCell::make(PackedCell::Kind::scalar, 0, pen.bits, WidthState::spacer);
        target.noteWide();
    }
    m_x += width;
    if (m_x > right) {
        m_x = right;
        m_pendingWrap = true;
    }
}

/// The column of the character that a combining one joins; negative when there is none.
int Buffer::columnBeforeCursor() const {
    const int col = m_pendingWrap ? m_x : m_x - 1;
    return col > 0 && line(m_y)[col].isSpacer() ? col - 1 : col;
}

/// Of a text, how much joins the character at `col`, which stands before the cursor.
std::size_t Buffer::joinCluster(std::span<const char32_t> text, int col, const Pen& pen, ClusterMode mode) {
    BufferLine& target = line(m_y);
    const PackedCell before = target[col];
    std::array<char32_t, CellArena::maximumClusterScalars> cluster;
    char32_t memory = 0;
    std::size_t size = m_cellArena->scalarValues(before, memory).copy(cluster.data(), cluster.size());
    if (size == 0) {
        cluster[size++] = U' ';
    }
    unicode::GraphemeBreaker breaker;
    for (std::size_t i = 0; i < size; ++i) {
        breaker.startsCluster(cluster[i]);
    }
    const char32_t scalar = text.front();
    const Properties properties = unicode::properties(scalar);
    const GraphemeBreak kind = properties.graphemeBreak();
    const bool starts = breaker.startsCluster(scalar);
    if (mode == ClusterMode::graphemes
            ? starts
            : kind == GraphemeBreak::control || kind == GraphemeBreak::cr || kind == GraphemeBreak::lf) {
        return 0;
    }
    const bool widens =
        mode == ClusterMode::graphemes && !before.isWide() &&
        (scalar == unicode::emojiSelector ? size == 1 && unicode::properties(cluster[0]).takesEmojiSelector()
                                          : properties.width() > 0 && kind != GraphemeBreak::regionalIndicator);
    // What follows into the cluster comes with it, so that what is interned is the whole: marks, and behind a wide
    // character, which nothing widens, all that joins it.
    const bool takesAll = mode == ClusterMode::graphemes && before.isWide() && !before.isEmpty();
    std::size_t count = 1;
    for (; count < text.size(); ++count) {
        const bool joins = !breaker.startsCluster(text[count]) && takesAll && size + count < cluster.size();
        if (!joins && !isPlainMark(text[count])) {
            break;
        }
    }
    if (const std::size_t added = std::min(count, cluster.size() - size); added > 0) {
        std::copy_n(text.data(), added, cluster.data() + size);
        if (const std::uint32_t id = m_cellArena->intern({cluster.data(), size + added}); id != 0) {
            const std::uint64_t rest = before.isEmpty() ? pen.bits : before.rawValue & ~(PackedCell::contentMask | 3);
            target.replace(col, PackedCell::make(PackedCell::Kind::cluster, id, rest));
        }
    }
    if (widens) {
        widen(col, pen);
    }
    return count;
}

/// Of a text that begins with what may join the character before it: how much of it was written.
std::size_t Buffer::putClustered(std::span<const char32_t> text, const Pen& pen, ClusterMode mode) {
    const char32_t scalar = text.front();
    const Properties properties = unicode::properties(scalar);
    const GraphemeBreak kind = properties.graphemeBreak();
    if (const int col = columnBeforeCursor(); col >= 0 && (mode == ClusterMode::graphemes || properties.width() == 0)) {
        if (const std::size_t joined = joinCluster(text, col, pen, mode); joined > 0) {
            return joined;
        }
    }
    int width = properties.width();
    if (width == 0) {
        return 1;
    }
    if (mode == ClusterMode::graphemes && kind == GraphemeBreak::regionalIndicator &&
        m_setup.regionalIndicatorWidth == RegionalIndicatorWidth::wide) {
        width = 2;
    }
    putScalar(scalar, width, pen);
    if (mode == ClusterMode::graphemes && kind == GraphemeBreak::prepend) {
        m_lastScalar |= joinsNext;
    }
    return 1;
}

/// The character at `col`, just written, takes two columns from now on.
void Buffer::widen(int col, const Pen& pen) {
    const PackedCell cell = line(m_y)[col].with(WidthState::wide);
    const int x = m_x;
    const bool wasPending = m_pendingWrap;
    setCursor(col, m_y);
    if (const int right = std::max(rightLimit(line(m_y)), col); col == right) {
        if (!canWrapWide(right)) {
            m_x = x;
            m_pendingWrap = wasPending;
            return;
        }
        if (tellsLosses) {
            lineObserver->cellsLost(*this, m_y, col, col + 1);
        }
        line(m_y).set(col, pen.blank);
    } else if (insertsAtCursor()) {
        if (lineObserver != nullptr) {
            lineObserver->cellsMoved(*this, col, -1);
        }
        line(m_y).deleteCells(col, 1, right + 1, pen.blank);
    }
    insertCharacter(cell, pen);
}

} // namespace term
