#include "TermEngine/KittyGraphics.h"

#include <utility>

namespace term {

namespace {

/// Which placements of the screen go, by the lower case of the letter; nothing for another letter.
ImageStore::Condition placedWhere(char what, const GraphicsCommand& command, const GraphicsContext& context) {
    const auto covers = [](const ImagePlacement& placement, int64_t row, int column) {
        const bool hasRow = row < 0 || (row >= placement.row && row < placement.row + placement.rows);
        const bool hasColumn =
            column < 0 || (column >= placement.column && column < placement.column + placement.columns);
        return hasRow && hasColumn;
    };
    const int column = command.extent('x') - 1;
    const int64_t row = context.topRow + command.extent('y') - 1;
    const int z = command.signedNumber('z');
    switch (what) {
    case 'a':
        return [](const ImagePlacement&) { return true; };
    case 'c':
        return [=](const ImagePlacement& some) {
            return covers(some, context.topRow + context.cursorRow, context.cursorColumn);
        };
    case 'p':
        return [=](const ImagePlacement& some) { return covers(some, row, column); };
    case 'q':
        return [=](const ImagePlacement& some) { return some.z == z && covers(some, row, column); };
    case 'x':
        return [=](const ImagePlacement& some) { return covers(some, -1, column); };
    case 'y':
        return [=](const ImagePlacement& some) { return covers(some, row, -1); };
    case 'z':
        return [=](const ImagePlacement& some) { return some.z == z; };
    default:
        return nullptr;
    }
}

} // namespace

GraphicsResult KittyGraphics::erase(const GraphicsCommand& command, const GraphicsContext& context) {
    const char what = command.letter('d', 'a');
    const bool isUpper = what >= 'A' && what <= 'Z';
    const char lower = isUpper ? static_cast<char>(what + 0x20) : what;
    ImageStore::Condition condition;
    if (lower == 'f') {
        const auto image = addressed(command);
        while (image && (*image)->frames.size() > 1) {
            m_store.removeFrame(**image, (*image)->frames.size() - 1);
        }
        return {.hasChanged = image.has_value()};
    }
    if (lower == 'i' || lower == 'n') {
        const StoredImage* image =
            lower == 'i' ? m_store.find(command.number('i')) : m_store.findNewest(command.number('I'));
        if (image == nullptr) {
            return {};
        }
        const uint32_t id = image->id;
        const uint32_t placementId = command.number('p');
        if (isUpper && placementId == 0) {
            m_store.remove(id);
            return {.hasChanged = true};
        }
        condition = [=](const ImagePlacement& placement) {
            return placement.imageId == id && (placementId == 0 || placement.placementId == placementId);
        };
    } else if (lower == 'r') {
        const uint32_t first = command.number('x');
        const uint32_t last = command.number('y');
        if (isUpper) {
            return {.hasChanged = m_store.remove(first, last)};
        }
        condition = [=](const ImagePlacement& some) { return some.imageId >= first && some.imageId <= last; };
    } else if (auto isPlaced = placedWhere(lower, command, context)) {
        condition = [isPlaced = std::move(isPlaced), context](const ImagePlacement& placement) {
            return placement.screen == context.screen && !placement.isVirtual &&
                   placement.row + placement.rows > context.topRow && placement.row < context.topRow + context.rows &&
                   isPlaced(placement);
        };
    } else {
        return {};
    }
    const size_t before = m_store.placements().size();
    m_store.removePlacements(condition, isUpper ? ImageStore::Data::release : ImageStore::Data::keep);
    return {.hasChanged = m_store.placements().size() != before};
}

} // namespace term
