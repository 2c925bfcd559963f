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

/// UTF-8: soft wraps joined, other lines parted by LF, no blanks that nobody wrote at the ends of lines.
[[nodiscard]] std::string textIn(const Buffer& buffer, const TextRange& range, RangeShape shape = RangeShape::flowing);

/// Up to where cells of a line count: all of one that flows over, but for the last one where a wide character did not
/// fit; of another line those that were written.
[[nodiscard]] int textLength(const Buffer& buffer, int index);
/// The word at a place, over soft wraps: letters, digits, everything beyond ASCII and `alsoInWords`; elsewhere the run
/// of blanks, or the one character.
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

struct SearchOptions {
    bool ignoresCase = true;          ///< by Unicode's simple case folding
    bool isRegularExpression = false; ///< ECMAScript, without references to groups and looking ahead or behind
    bool wholeWords = false;
    std::size_t limit = 10'000;            ///< matches
    std::uint64_t mostSteps = 300'000'000; ///< of a regular expression; then the search ends with what it has found
};

/// All matches in screen and history, the oldest first; soft wraps are joined. Nothing for a regular expression that is
/// none.
[[nodiscard]] std::optional<std::vector<TextRange>> search(
    const Buffer& buffer, std::string_view pattern, const SearchOptions& options = {});

} // namespace term
