#include "TermEngine/KittyGraphics.h"

#include <utility>

namespace term {

GraphicsResult KittyGraphics::erase(const GraphicsCommand& command, const GraphicsContext& context) {
    const char what = command.letter('d', 'a');
    const bool isUpper = what >= 'A' && what <= 'Z';
    const auto data = isUpper ? ImageStore::Data::release : ImageStore::Data::keep;
    const auto covers = [](const ImagePlacement& placement, int64_t row, int column) {
        const bool hasRow = row < 0 || (row >= placement.row && row < placement.row + placement.rows);
        const bool hasColumn =
            column < 0 || (column >= placement.column && column < placement.column + placement.columns);
        return hasRow && hasColumn;
    };
    const int cellColumn = command.extent('x') - 1;
    const int64_t cellRow = context.topRow + command.extent('y') - 1;
    const int z = command.signedNumber('z');
    const auto onScreen = [&context](ImageStore::Condition condition) -> ImageStore::Condition {
        return [condition = std::move(condition), context](const ImagePlacement& placement) {
            return placement.screen == context.screen && !placement.isVirtual &&
                   placement.row + placement.rows > context.topRow && placement.row < context.topRow + context.rows &&
                   condition(placement);
        };
    };
    ImageStore::Condition condition;
    switch (isUpper ? static_cast<char>(what + 0x20) : what) {
    case 'a':
        condition = onScreen([](const auto&) { return true; });
        break;
    case 'c':
        condition = onScreen([=](const auto& placement) {
            return covers(placement, context.topRow + context.cursorRow, context.cursorColumn);
        });
        break;
    case 'p':
        condition = onScreen([=](const auto& some) { return covers(some, cellRow, cellColumn); });
        break;
    case 'q':
        condition = onScreen([=](const auto& some) { return some.z == z && covers(some, cellRow, cellColumn); });
        break;
    case 'x':
        condition = onScreen([=](const auto& some) { return covers(some, -1, cellColumn); });
        break;
    case 'y':
        condition = onScreen([=](const auto& some) { return covers(some, cellRow, -1); });
        break;
    case 'z':
        condition = onScreen([=](const auto& some) { return some.z == z; });
        break;
    case 'i':
    case 'n': {
        const StoredImage* image =
            what == 'i' || what == 'I' ? m_store.find(command.number('i')) : m_store.findNewest(command.number('I'));
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
        break;
    }
    case 'r': {
        const uint32_t first = command.number('x');
        const uint32_t last = command.number('y');
        condition = [=](const ImagePlacement& some) { return some.imageId >= first && some.imageId <= last; };
        break;
    }
    case 'f': {
        const auto image = addressed(command);
        while (image && (*image)->frames.size() > 1) {
            m_store.removeFrame(**image, (*image)->frames.size() - 1);
        }
        return {.hasChanged = image.has_value()};
    }
    default:
        return {};
    }
    const size_t before = m_store.placements().size();
    m_store.removePlacements(condition, data);
    return {.hasChanged = m_store.placements().size() != before};
}

} // namespace term
