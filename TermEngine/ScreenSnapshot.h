#pragma once

#include "TermEngine/ImagePlaceholders.h"
#include "TermEngine/Terminal.h"

#include <memory>
#include <vector>

namespace term {

/// An image in view.
struct SnapshotImage {
    std::shared_ptr<const RgbaImage> pixels; ///< the frame that is shown; nobody changes it any more
    ImagePlacement placement;
    int row = 0; ///< of its first line in the view; negative where that is above
};

/// Cells in view that show a row of an image.
struct SnapshotPlaceholder {
    std::shared_ptr<const RgbaImage> pixels;
    PlaceholderRun run;
    int row = 0;
    int columns = 0; ///< cells that the whole image is fitted into, its proportions kept and in their middle
    int rows = 0;
};

/// What a renderer draws, for another thread: it shares nothing with the terminal that changes.
struct ScreenSnapshot {
    std::shared_ptr<const CellArena> arena;
    std::vector<std::shared_ptr<const BufferLine>> lines; ///< those in view, the history included
    int cols = 0;
    Position cursor; ///< in the view; the row is past the end when it is not in view
    bool isCursorVisible = true;
    CursorStyle cursorStyle = CursorStyle::blinkBlock;
    bool isReverseVideo = false;
    std::vector<SnapshotImage> images; ///< in the order in which they are drawn
    std::vector<SnapshotPlaceholder> placeholders;
};

/// Lines and arena that have not changed since the snapshot before are those of it.
[[nodiscard]] ScreenSnapshot takeSnapshot(const Terminal& terminal, const ScreenSnapshot* before = nullptr);

} // namespace term
