#include "TermEngine/TextRange.h"

#include "TermEngine/LogicalLine_p.h"

#include <algorithm>

namespace term {
namespace {

bool flowsOver(const Buffer& buffer, int index) {
    return index + 1 < buffer.lineCount() && buffer.lineAt(index + 1).isWrapped();
}

std::int64_t firstLine(const Buffer& buffer) {
    return static_cast<std::int64_t>(buffer.trimmedCount());
}

enum class CharacterClass : std::uint8_t { word, blank, other };

CharacterClass classOf(char c, std::string_view alsoInWords) {
    const bool isWord = (c & 0x80) != 0 || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (isWord || alsoInWords.find(c) != std::string_view::npos) {
        return CharacterClass::word;
    }
    return c == ' ' ? CharacterClass::blank : CharacterClass::other;
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

LogicalLine LogicalLine::at(const Buffer& buffer, int index) {
    LogicalLine made;
    made.firstIndex = index;
    while (made.firstIndex > 0 && buffer.lineAt(made.firstIndex).isWrapped()) {
        --made.firstIndex;
    }
    made.endIndex = made.firstIndex;
    int length = 0;
    do {
        const BufferLine& line = buffer.lineAt(made.endIndex);
        length = textLength(buffer, made.endIndex);
        for (int col = 0; col < length; ++col) {
            if (!line[col].isSpacer()) {
                buffer.cellArena().appendText(made.text, line[col]);
                made.places.resize(made.text.size(), {firstLine(buffer) + made.endIndex, col});
            }
        }
    } while (flowsOver(buffer, made.endIndex++));
    made.places.push_back({firstLine(buffer) + made.endIndex - 1, length});
    return made;
}

std::size_t LogicalLine::byteAt(TextPlace place) const {
    // The last character that begins at the place or before it.
    const auto behind = std::upper_bound(places.begin(), places.end() - 1, place);
    if (behind == places.begin()) {
        return 0;
    }
    if (behind == places.end() - 1 && place >= places.back()) {
        return text.size();
    }
    return static_cast<std::size_t>(std::lower_bound(places.begin(), behind, *(behind - 1)) - places.begin());
}

std::string textIn(const Buffer& buffer, const TextRange& range, RangeShape shape) {
    std::string text;
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
        const int end = index == last ? std::min(range.end.col, length) : length;
        text += buffer.lineAt(index).translateToString(buffer.cellArena(), false, from, std::max(end, 0));
        if (index < last && !flowsOver(buffer, index)) {
            text += '\n';
        }
    }
    return text;
}

TextRange lineAt(const Buffer& buffer, TextPlace place) {
    const LogicalLine line = LogicalLine::at(buffer, indexOf(buffer, place.line));
    return {{firstLine(buffer) + line.firstIndex, 0}, {firstLine(buffer) + line.endIndex - 1, buffer.cols()}};
}

TextRange wordAt(const Buffer& buffer, TextPlace place, std::string_view alsoInWords) {
    const LogicalLine line = LogicalLine::at(buffer, indexOf(buffer, place.line));
    std::size_t first = line.byteAt(place);
    if (first == line.text.size()) {
        return {line.places.back(), {line.places.back().line, buffer.cols()}};
    }
    const CharacterClass wanted = classOf(line.text[first], alsoInWords);
    std::size_t end = first + 1;
    if (wanted != CharacterClass::other) {
        while (first > 0 && classOf(line.text[first - 1], alsoInWords) == wanted) {
            --first;
        }
        while (end < line.text.size() && classOf(line.text[end], alsoInWords) == wanted) {
            ++end;
        }
    }
    return {line.places[first], line.places[end]};
}

std::optional<TextRange> semanticRangeAt(const Buffer& buffer, TextPlace place) {
    const int index = indexOf(buffer, place.line);
    const std::uint8_t wanted = buffer.lineAt(index)[place.col].semanticCode();
    if (wanted == 0) {
        return {};
    }
    // The part ends where another one begins; what was never written does not count.
    const auto extent = [&](int step) {
        TextPlace last = {firstLine(buffer) + index, place.col};
        for (int at = index, col = place.col; at >= 0 && at < buffer.lineCount(); at += step) {
            const int length = buffer.lineAt(at).getTrimmedLength();
            for (col = at == index ? col : step > 0 ? 0 : length - 1; col >= 0 && col < length; col += step) {
                if (buffer.lineAt(at)[col].semanticCode() != wanted) {
                    return last;
                }
                last = {firstLine(buffer) + at, col};
            }
        }
        return last;
    };
    const TextPlace end = extent(1);
    return TextRange{extent(-1), {end.line, end.col + 1}};
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
