#pragma once

#include "TermEngine/TextRange.h"

namespace term {

/// A line with all that soft wraps join to it, as text with the place of every byte.
struct LogicalLine {
    int firstIndex = 0; ///< into the buffer's lines
    int endIndex = 0;
    std::string text;
    std::vector<TextPlace> places; ///< one a byte, and one for the end

    [[nodiscard]] static LogicalLine at(const Buffer& buffer, int index);
    /// The byte of the character at a place; the text's size for one past it.
    [[nodiscard]] std::size_t byteAt(TextPlace place) const;
};

/// Of a place that may lie outside: the index of its line within the buffer.
[[nodiscard]] int indexOf(const Buffer& buffer, std::int64_t line);

} // namespace term
