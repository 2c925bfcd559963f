#pragma once

#include "TermEngine/Buffer.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace term {

/// A place in the text of a buffer.
using TextPlace = LinePlace;

/// From `start` up to `end`, which is not part of it. Of a rectangle the two are corners.
struct TextRange {
    TextPlace start;
    TextPlace end;
    bool operator==(const TextRange&) const = default;
    [[nodiscard]] bool isEmpty() const { return !(start < end); }
};

enum class RangeShape : std::uint8_t { flowing, rectangle };

/// UTF-8: soft wraps joined, other lines parted by LF, no blanks that nobody wrote at the ends of lines. What
/// has left the history has no text any more.
[[nodiscard]] std::string textIn(const Buffer& buffer, const TextRange& range, RangeShape shape = RangeShape::flowing);

/// Up to where cells of a line count: all of one that flows over, but for the last one where a wide character did not
/// fit; of another line those that were written.
[[nodiscard]] int textLength(const Buffer& buffer, int index);
/// The word at a place, over soft wraps: letters, digits, marks and `alsoInWords` (characters of ASCII); elsewhere the
/// run of blanks, or the one character. Ideographs, Hiragana and Katakana are words of their own beside each other and
/// beside other letters, unless one of `alsoInWords` or a digit joins them.
[[nodiscard]] TextRange wordAt(const Buffer& buffer, TextPlace place, std::string_view alsoInWords = "-_./~:@%+#?&=");
/// The whole line at a place, with all that a soft wrap joins to it.
[[nodiscard]] TextRange lineAt(const Buffer& buffer, TextPlace place);
/// What the shell's marks (OSC 133) make of the surroundings: the prompt, the input or the output at the place.
[[nodiscard]] std::optional<TextRange> semanticRangeAt(const Buffer& buffer, TextPlace place);
/// The line of the next prompt above (negative direction) or below a line.
[[nodiscard]] std::optional<std::int64_t> promptFrom(const Buffer& buffer, std::int64_t line, int direction);

/// What is selected while a person drags.
class TextSelection {
public:
    enum class Unit : std::uint8_t { character, word, line, rectangle };

    void start(const Buffer& buffer, TextPlace place, Unit unit);
    void extend(const Buffer& buffer, TextPlace place);
    void clear() { m_range.reset(); }
    [[nodiscard]] std::optional<TextRange> range() const { return m_range; }
    [[nodiscard]] RangeShape shape() const {
        return m_unit == Unit::rectangle ? RangeShape::rectangle : RangeShape::flowing;
    }
    [[nodiscard]] bool contains(TextPlace place) const;
    [[nodiscard]] std::string text(const Buffer& buffer) const;
    /// What `Buffer::resize` has to carry along; `setPlaces` takes it back.
    [[nodiscard]] std::vector<TextPlace> places() const;
    void setPlaces(std::span<const TextPlace> places);

private:
    [[nodiscard]] TextRange unitAt(const Buffer& buffer, TextPlace place) const;

    Unit m_unit = Unit::character;
    TextRange m_anchor;
    std::optional<TextRange> m_range;
};

} // namespace term
