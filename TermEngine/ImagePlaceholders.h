#pragma once

#include "TermEngine/BufferLine.h"
#include "TermEngine/ImageStore.h"

#include <cstdint>
#include <vector>

namespace term {

/// Cells of a line that show a row of an image (kitty's graphics protocol, "Unicode placeholders"): the image and its
/// placement are in the colours of text and underline, the parts in the combining marks of U+10EEEE.
struct PlaceholderRun {
    static constexpr char32_t placeholder = unicode::imagePlaceholder;

    std::uint32_t imageId = 0;
    std::uint32_t placementId = 0; ///< 0: any virtual one of the image
    int column = 0;                ///< of the line
    int count = 0;
    int imageRow = 0; ///< among the cells of the placement
    int imageColumn = 0;

    bool operator==(const PlaceholderRun&) const = default;
};

[[nodiscard]] std::vector<PlaceholderRun> placeholdersIn(const BufferLine& line, const CellArena& arena);
/// The placement that a run shows a part of: its image fills `columns` by `rows` cells, with its proportions kept and
/// in their middle. Null where there is none, or where the run lies outside of it.
[[nodiscard]] const ImagePlacement* placementOf(const PlaceholderRun& run, const ImageStore& images);

} // namespace term
