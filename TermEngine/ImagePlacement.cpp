#include "TermEngine/ImagePlacement.h"

#include <algorithm>
#include <tuple>

namespace term {
namespace {

/// A placement in one direction.
struct Extent {
    int cells;
    int cellPixels; ///< 0: the source is stretched
    int& offset;
    int& source;
    int& sourceSize;

    /// Leaves the cells from `first` to `end`. False: they show nothing of the source.
    [[nodiscard]] bool cut(int first, int end) {
        int begin = 0;
        int behind = 0;
        if (cellPixels > 0) {
            const auto pixelAt = [this](int cell) {
                return static_cast<int>(std::clamp<int64_t>(int64_t{cell} * cellPixels - offset, 0, sourceSize));
            };
            begin = pixelAt(first);
            behind = end == cells ? sourceSize : pixelAt(end);
        } else {
            const auto pixelAt = [this](int cell) { return static_cast<int>(int64_t{cell} * sourceSize / cells); };
            // Where a pixel is larger than a cell, each of its cells shows it.
            begin = std::min(pixelAt(first), sourceSize - 1);
            behind = std::max(pixelAt(end), begin + 1);
        }
        offset = first == 0 ? offset : 0;
        source += begin;
        sourceSize = behind - begin;
        return sourceSize > 0;
    }
};

} // namespace

bool isDrawnBefore(const ImagePlacement& first, const ImagePlacement& second) {
    const auto rank = [](const ImagePlacement& some) {
        return std::tuple(some.z, some.isText ? 0 : some.imageId, some.serial);
    };
    return rank(first) < rank(second);
}

std::optional<ImagePlacement> partOf(const ImagePlacement& placement, const CellArea& area) {
    const CellArea whole = placement.area();
    if (area.contains(whole)) {
        return placement;
    }
    const CellArea part{
        std::max(whole.top, area.top), std::min(whole.bottom, area.bottom), std::max(whole.left, area.left),
        std::min(whole.right, area.right)};
    if (part.top >= part.bottom || part.left >= part.right) {
        return std::nullopt;
    }
    ImagePlacement cut = placement;
    Extent across{placement.columns, placement.cellWidth, cut.offsetX, cut.sourceX, cut.sourceWidth};
    Extent down{placement.rows, placement.cellHeight, cut.offsetY, cut.sourceY, cut.sourceHeight};
    const bool isLeft = across.cut(part.left - whole.left, part.right - whole.left) &&
                        down.cut(static_cast<int>(part.top - whole.top), static_cast<int>(part.bottom - whole.top));
    cut.row = part.top;
    cut.column = part.left;
    cut.rows = static_cast<int>(part.bottom - part.top);
    cut.columns = part.right - part.left;
    return isLeft ? std::optional(cut) : std::nullopt;
}

std::vector<ImagePlacement> partsAround(const ImagePlacement& placement, const CellArea& hole) {
    const CellArea whole = placement.area();
    const int64_t top = std::clamp(hole.top, whole.top, whole.bottom);
    const int64_t bottom = std::clamp(hole.bottom, top, whole.bottom);
    std::vector<ImagePlacement> parts;
    for (const CellArea& area :
         {CellArea{whole.top, top, whole.left, whole.right}, CellArea{bottom, whole.bottom, whole.left, whole.right},
          CellArea{top, bottom, whole.left, hole.left}, CellArea{top, bottom, hole.right, whole.right}}) {
        if (const auto part = partOf(placement, area)) {
            parts.push_back(*part);
        }
    }
    return parts;
}

} // namespace term
