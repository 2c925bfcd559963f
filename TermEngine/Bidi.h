#pragma once

#include "TermEngine/TerminalOptions.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace term {

class Buffer;

/// The Unicode Bidirectional Algorithm (UAX #9), and what a renderer needs of it for the rows of a screen.
namespace bidi {

/// Of one paragraph: even levels are read from left to right, odd ones from right to left.
struct Levels {
    std::uint8_t paragraph = 0;
    std::vector<std::uint8_t> scalars{}; ///< one each, after rule I2
};

/// Without a direction, the first strong scalar has it (P2, P3), and left to right is that of a text without one.
[[nodiscard]] Levels levelsOf(std::u32string_view text, std::optional<BidiDirection> direction);
/// L1 for the scalars of one line of the paragraph: blanks at its end are of the paragraph's level.
void resetTrailing(std::span<std::uint8_t> levels, std::u32string_view text, std::uint8_t paragraph);
/// L2: at each place from the left, the index of what stands there.
[[nodiscard]] std::vector<int> visualOrder(std::span<const std::uint8_t> levels);

enum class BoxDrawing : std::uint8_t { kept, mirrored };
/// L4: what shows in place of a scalar that is read from right to left.
[[nodiscard]] char32_t mirrored(char32_t scalar, BoxDrawing boxes = BoxDrawing::kept);

} // namespace bidi

/// A row as it is shown.
struct PresentedRow {
    /// For each column from the left, the column of the cell that stands there. Both halves of a wide character stand
    /// side by side, the first one at the left. Empty: all stand where they are.
    std::vector<int> columns{};
    /// For each column of the row, whether its cell is read from right to left. Empty: none is.
    std::vector<bool> isRightToLeft{};
    /// In which its paragraph is shown, given or found.
    BidiDirection paragraph = BidiDirection::leftToRight;
};

/// A row of a buffer, by its index, within its paragraph: the line with all that soft wraps join to it. One of more
/// than `mostRows` rows is left as it is.
[[nodiscard]] PresentedRow presentedRow(
    const Buffer& buffer, int index, const BidiPresentationState& state, int mostRows);

} // namespace term
