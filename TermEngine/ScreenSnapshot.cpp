#include "TermEngine/ScreenSnapshot.h"

#include <algorithm>
#include <unordered_map>

namespace term {
namespace {

std::shared_ptr<const RgbaImage> pixelsOf(const ImageStore& images, std::uint32_t id) {
    const StoredImage& image = images.images().at(id);
    return image.frames[image.currentFrame].pixels;
}

void addImages(ScreenSnapshot& made, const Terminal& terminal) {
    const ImageStore& images = terminal.images();
    const Buffer& buffer = terminal.buffer();
    const auto screen = terminal.isAlternateActive() ? ScreenId::alternate : ScreenId::normal;
    const std::int64_t top = static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yDisp();
    bool hasVirtual = false;
    for (const ImagePlacement& placement : images.placements()) {
        hasVirtual = hasVirtual || placement.isVirtual;
        const bool isInView = placement.row < top + buffer.rows() && placement.row + placement.rows > top;
        if (!placement.isVirtual && placement.screen == screen && isInView) {
            made.images.push_back(
                {pixelsOf(images, placement.imageId), placement, static_cast<int>(placement.row - top)});
        }
    }
    std::ranges::sort(made.images, isDrawnBefore, &SnapshotImage::placement);
    for (int row = 0; hasVirtual && row < buffer.rows(); ++row) {
        for (const PlaceholderRun& run : placeholdersIn(buffer.lineAt(buffer.yDisp() + row), terminal.arena())) {
            if (const ImagePlacement* placement = placementOf(run, images)) {
                made.placeholders.push_back(
                    {pixelsOf(images, run.imageId), run, row, placement->columns, placement->rows});
            }
        }
    }
}

} // namespace

ScreenSnapshot takeSnapshot(const Terminal& terminal, const ScreenSnapshot* before) {
    const Buffer& buffer = terminal.buffer();
    ScreenSnapshot made;
    made.arena = CellArena::snapshotOf(terminal.arena(), before != nullptr ? before->arena : nullptr);
    made.cols = buffer.cols();
    made.cursor = {buffer.x(), buffer.y() + buffer.yBase() - buffer.yDisp()};
    made.isCursorVisible = terminal.modes().cursorVisible;
    made.cursorStyle = terminal.cursorStyle();
    made.isReverseVideo = terminal.modes().reverseVideo;

    std::unordered_map<std::uint64_t, std::shared_ptr<const BufferLine>> known;
    if (before) {
        for (const auto& line : before->lines) {
            known.emplace(line->renderIdentity(), line);
        }
    }
    for (int row = 0; row < buffer.rows(); ++row) {
        const BufferLine& line = buffer.lineAt(buffer.yDisp() + row);
        const auto same = known.find(line.renderIdentity());
        if (same != known.end() && same->second->generation() == line.generation() &&
            same->second->size() == line.size()) {
            made.lines.push_back(same->second);
        } else {
            made.lines.push_back(std::make_shared<const BufferLine>(line));
        }
    }
    if (!terminal.images().placements().empty()) {
        addImages(made, terminal);
    }
    return made;
}

} // namespace term
