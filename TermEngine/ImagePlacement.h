#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace term {

/// Which of a terminal's screens.
enum class ScreenId : uint8_t { normal, alternate };

/// Cells of a screen: lines counted from the first that the terminal ever had, and columns; the ends excluded.
struct CellArea {
    int64_t top = 0;
    int64_t bottom = 0;
    int left = 0;
    int right = 0;

    [[nodiscard]] static constexpr CellArea everything() {
        return {
            std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max(), std::numeric_limits<int>::min(),
            std::numeric_limits<int>::max()};
    }
    [[nodiscard]] bool contains(const CellArea& other) const {
        return other.top >= top && other.bottom <= bottom && other.left >= left && other.right <= right;
    }
    [[nodiscard]] bool intersects(const CellArea& other) const {
        return top < other.bottom && other.top < bottom && left < other.right && other.left < right;
    }
    bool operator==(const CellArea&) const = default;
};

struct CellShift {
    int64_t rows = 0;
    int columns = 0;
};

/// An image on a screen.
struct ImagePlacement {
    /// What has z below this is drawn below cells with a background of their own too; other negative ones only below
    /// the text (kitty's graphics protocol).
    static constexpr int belowBackgrounds = -1'073'741'824;

    uint32_t imageId = 0;
    uint32_t placementId = 0;
    ScreenId screen = ScreenId::normal;
    int64_t row = 0; ///< of its first line, counted from the first line that the terminal ever had
    int column = 0;
    int offsetX = 0; ///< pixels within the first cell
    int offsetY = 0;
    int sourceX = 0; ///< what is shown of the image
    int sourceY = 0;
    int sourceWidth = 0;
    int sourceHeight = 0;
    int columns = 0; ///< cells that it covers
    int rows = 0;
    /// Pixels of a cell when it was placed: it is shown pixel for pixel, as long as cells stay as large. 0: it is
    /// stretched over its cells.
    int cellWidth = 0;
    int cellHeight = 0;
    int z = 0;
    bool isVirtual = false; ///< shown where cells with U+10EEEE name it, not by itself
    /// Of a sixel picture or of OSC 1337: it belongs to the text, which replaces it where it is written or erased.
    bool isText = false;
    uint64_t serial = 0;
    /// Of a relative placement: the serial of the placement with which it moves and goes; 0: it stands by itself.
    uint64_t parentSerial = 0;
    int parentColumns = 0; ///< cells from the top left of the parent to its own
    int parentRows = 0;
    int64_t originRow = 0; ///< where the top left of the whole placement is, though a part may have been cut off
    int originColumn = 0;

    void moveTo(int64_t newRow, int newColumn) {
        originRow += newRow - row;
        originColumn += newColumn - column;
        row = newRow;
        column = newColumn;
    }
    [[nodiscard]] CellArea area() const { return {row, row + rows, column, column + columns}; }
    bool operator==(const ImagePlacement&) const = default;
};

/// Whether the first is drawn before the second: by z, then by the image's id, as kitty's graphics protocol has it;
/// what belongs to the text, as it came.
[[nodiscard]] bool isDrawnBefore(const ImagePlacement& first, const ImagePlacement& second);
/// What of a placement lies in `area`; nothing where none of its pixels does.
[[nodiscard]] std::optional<ImagePlacement> partOf(const ImagePlacement& placement, const CellArea& area);
/// What is left of a placement around `hole`: at most four parts.
[[nodiscard]] std::vector<ImagePlacement> partsAround(const ImagePlacement& placement, const CellArea& hole);

} // namespace term
