#include "TermEngine/TextRange.h"

#include "TermEngine/TextRange_p.h"
#include "TermEngine/Unicode.h"

#include <algorithm>

namespace term {
namespace {

using unicode::WordClass;

bool flowsOver(const Buffer& buffer, int index) {
    return index + 1 < buffer.lineCount() && buffer.lineAt(index + 1).isWrapped();
}

std::int64_t firstLine(const Buffer& buffer) {
    return static_cast<std::int64_t>(buffer.trimmedCount());
}

/// Goes from one character of a line to the next, over soft wraps.
class Character {
public:
    /// The character at a place, or where the text of the line ends.
    Character(const Buffer& buffer, TextPlace place) : m_buffer(&buffer) {
        enter(indexOf(buffer, place.line));
        m_col = std::clamp(place.col, 0, m_length);
        if (m_col < m_length ? row()[m_col].isSpacer() : flowsOver(buffer, m_index)) {
            previous();
        }
    }
    [[nodiscard]] bool isEnd() const { return m_col >= m_length; }
    [[nodiscard]] TextPlace place() const { return {firstLine(*m_buffer) + m_index, m_col}; }
    [[nodiscard]] WordClass wordClass(std::string_view alsoInWords) const {
        char32_t memory = 0;
        const std::u32string_view scalars = m_buffer->cellArena().scalarValues(row()[m_col], memory);
        if (scalars.empty()) {
            return WordClass::blank;
        }
        const char32_t first = scalars.front();
        const bool joins = first < 0x80 && alsoInWords.find(static_cast<char>(first)) != std::string_view::npos;
        return joins ? WordClass::joining : unicode::wordClass(first);
    }
    /// False at the end.
    bool next() {
        do {
            ++m_col;
        } while (m_col < m_length && row()[m_col].isSpacer());
        while (m_col >= m_length && flowsOver(*m_buffer, m_index)) {
            enter(m_index + 1);
            m_col = 0;
        }
        return !isEnd();
    }
    /// False at the beginning.
    bool previous() {
        do {
            while (m_col == 0) {
                if (m_index == 0 || !row().isWrapped()) {
                    return false;
                }
                enter(m_index - 1);
                m_col = m_length;
            }
            --m_col;
        } while (row()[m_col].isSpacer());
        return true;
    }

private:
    void enter(int index) {
        m_index = index;
        m_length = textLength(*m_buffer, index);
    }
    [[nodiscard]] const BufferLine& row() const { return m_buffer->lineAt(m_index); }

    const Buffer* m_buffer;
    int m_index = 0;
    int m_length = 0; ///< of the row
    int m_col = 0;
};

/// A cell that a shell's marks made part of something.
struct SemanticCell {
    int index = 0;
    int col = 0;
    std::uint8_t code = 0;
};

/// The next cell with text from column `col` of a line on, or back from it, and over lines up to where a prompt begins.
std::optional<SemanticCell> nextWritten(const Buffer& buffer, int index, int col, int step) {
    for (int at = index; at >= 0 && at < buffer.lineCount(); at += step) {
        const bool beginsPrompt = buffer.lineAt(at).semanticMarks().promptStart;
        if (at != index && step > 0 && beginsPrompt) {
            break;
        }
        const std::span<const PackedCell> cells = buffer.lineAt(at).usedCells();
        const int length = static_cast<int>(cells.size());
        const int from = at == index ? col : step > 0 ? 0 : length - 1;
        for (int i = step > 0 ? from : std::min(from, length - 1); i >= 0 && i < length; i += step) {
            const PackedCell cell = cells[static_cast<std::size_t>(i)];
            if (!cell.isBlank()) {
                return SemanticCell{at, i, cell.semanticCode()};
            }
        }
        if (step < 0 && beginsPrompt) {
            break;
        }
    }
    return {};
}

/// What the cell at a place belongs to. Of one that nobody wrote, which tabs and motions of the cursor leave, what
/// stands behind it in its line decides, or else what stands before and behind it, when that is the same.
std::optional<SemanticCell> semanticCellAround(const Buffer& buffer, int index, int col) {
    const std::optional<SemanticCell> behind = nextWritten(buffer, index, col, 1);
    if (!behind || behind->index != index) {
        const std::optional<SemanticCell> before = nextWritten(buffer, index, col, -1);
        if (!before || !behind || before->code != behind->code) {
            return {};
        }
    }
    return behind->code == 0 ? std::nullopt : behind;
}

/// The last cell in a direction of the part that a cell belongs to. Cells that nobody wrote do not end it.
SemanticCell lastOfPart(const Buffer& buffer, SemanticCell cell, int step) {
    SemanticCell last = cell;
    std::optional<SemanticCell> next = cell;
    while (next && next->code == cell.code) {
        last = *next;
        next = nextWritten(buffer, last.index, last.col + step, step);
    }
    return last;
}

} // namespace

int indexOf(const Buffer& buffer, std::int64_t line) {
    return static_cast<int>(std::clamp<std::int64_t>(line - firstLine(buffer), 0, buffer.lineCount() - 1));
}

int textLength(const Buffer& buffer, int index) {
    const BufferLine& line = buffer.lineAt(index);
    if (!flowsOver(buffer, index)) {
        return line.getTrimmedLength();
    }
    return line[line.size() - 1].widthState() == WidthState::wrapPad ? line.size() - 1 : line.size();
}

int firstOfWrapped(const Buffer& buffer, int index) {
    while (index > 0 && buffer.lineAt(index).isWrapped()) {
        --index;
    }
    return index;
}

std::string textIn(const Buffer& buffer, const TextRange& range, RangeShape shape) {
    std::string text;
    const std::int64_t endLine = firstLine(buffer) + buffer.lineCount();
    if (std::max(range.start.line, range.end.line) < firstLine(buffer) ||
        std::min(range.start.line, range.end.line) >= endLine) {
        return text;
    }
    if (shape == RangeShape::rectangle) {
        const auto [left, right] = std::minmax(range.start.col, range.end.col);
        const int first = indexOf(buffer, std::min(range.start.line, range.end.line));
        const int last = indexOf(buffer, std::max(range.start.line, range.end.line));
        for (int index = first; index <= last; ++index) {
            text += buffer.lineAt(index).translateToString(buffer.cellArena(), true, left, right);
            text += index < last ? "\n" : "";
        }
        return text;
    }
    if (range.isEmpty()) {
        return text;
    }
    const int first = indexOf(buffer, range.start.line);
    const int last = indexOf(buffer, range.end.line);
    for (int index = first; index <= last; ++index) {
        const int from = index == first && range.start.line >= firstLine(buffer) ? range.start.col : 0;
        const int length = textLength(buffer, index);
        const int end = index == last && range.end.line < endLine ? std::min(range.end.col, length) : length;
        text += buffer.lineAt(index).translateToString(buffer.cellArena(), false, from, std::max(end, 0));
        if (index < last && !flowsOver(buffer, index)) {
            text += '\n';
        }
    }
    return text;
}

TextRange lineAt(const Buffer& buffer, TextPlace place) {
    const int index = indexOf(buffer, place.line);
    int last = index;
    while (flowsOver(buffer, last)) {
        ++last;
    }
    return {{firstLine(buffer) + firstOfWrapped(buffer, index), 0}, {firstLine(buffer) + last, buffer.cols()}};
}

TextRange wordAt(const Buffer& buffer, TextPlace place, std::string_view alsoInWords) {
    const Character at(buffer, place);
    if (at.isEnd()) {
        return {at.place(), {at.place().line, buffer.cols()}};
    }
    const auto belong = [](WordClass left, WordClass right) {
        return areOneWord(left, right) || (left == WordClass::blank && right == WordClass::blank);
    };
    WordClass neighbour = at.wordClass(alsoInWords);
    Character first = at;
    for (Character before = at; before.previous() && belong(before.wordClass(alsoInWords), neighbour);) {
        first = before;
        neighbour = first.wordClass(alsoInWords);
    }
    neighbour = at.wordClass(alsoInWords);
    Character end = at;
    while (end.next() && belong(neighbour, end.wordClass(alsoInWords))) {
        neighbour = end.wordClass(alsoInWords);
    }
    return {first.place(), end.place()};
}

std::optional<TextRange> semanticRangeAt(const Buffer& buffer, TextPlace place) {
    const int index = indexOf(buffer, place.line);
    const std::optional<SemanticCell> found = semanticCellAround(buffer, index, std::max(place.col, 0));
    if (!found) {
        return {};
    }
    const SemanticCell first = lastOfPart(buffer, *found, -1);
    const SemanticCell last = lastOfPart(buffer, *found, 1);
    // What indents its first line belongs to it.
    const std::optional<SemanticCell> before = nextWritten(buffer, first.index, first.col - 1, -1);
    const int col = before && before->index == first.index ? first.col : 0;
    return TextRange{{firstLine(buffer) + first.index, col}, {firstLine(buffer) + last.index, last.col + 1}};
}

std::optional<std::int64_t> promptFrom(const Buffer& buffer, std::int64_t line, int direction) {
    const int step = direction < 0 ? -1 : 1;
    for (int index = indexOf(buffer, line) + step; index >= 0 && index < buffer.lineCount(); index += step) {
        if (buffer.lineAt(index).semanticMarks().promptStart) {
            return firstLine(buffer) + index;
        }
    }
    return {};
}

TextRange TextSelection::unitAt(const Buffer& buffer, TextPlace place) const {
    switch (m_unit) {
    case Unit::word:
        return wordAt(buffer, place);
    case Unit::line:
        return lineAt(buffer, place);
    case Unit::character:
    case Unit::rectangle:
        break;
    }
    return {place, place};
}

void TextSelection::start(const Buffer& buffer, TextPlace place, Unit unit) {
    m_unit = unit;
    m_anchor = unitAt(buffer, place);
    m_range = m_anchor;
}

void TextSelection::extend(const Buffer& buffer, TextPlace place) {
    const TextRange unit = unitAt(buffer, place);
    if (m_unit == Unit::rectangle) {
        m_range = TextRange{m_anchor.start, place};
    } else {
        m_range = TextRange{std::min(m_anchor.start, unit.start), std::max(m_anchor.end, unit.end)};
    }
}

bool TextSelection::contains(TextPlace place) const {
    if (!m_range) {
        return false;
    }
    if (m_unit == Unit::rectangle) {
        const auto [top, bottom] = std::minmax(m_range->start.line, m_range->end.line);
        const auto [left, right] = std::minmax(m_range->start.col, m_range->end.col);
        return place.line >= top && place.line <= bottom && place.col >= left && place.col < right;
    }
    return place >= m_range->start && place < m_range->end;
}

std::vector<TextPlace> TextSelection::places() const {
    if (!m_range) {
        return {};
    }
    return {m_range->start, m_range->end, m_anchor.start, m_anchor.end};
}

void TextSelection::setPlaces(std::span<const TextPlace> places) {
    if (places.size() == 4) {
        m_range = TextRange{places[0], places[1]};
        m_anchor = {places[2], places[3]};
    }
}

std::string TextSelection::text(const Buffer& buffer) const {
    return m_range ? textIn(buffer, *m_range, shape()) : std::string();
}

} // namespace term
