#pragma once

#include "TermEngine/Terminal.h"

#include <memory>
#include <vector>

namespace term {

/// What a renderer draws, for another thread: it shares nothing with the terminal that changes.
struct ScreenSnapshot {
    std::shared_ptr<const CellArena> arena;
    std::uint64_t arenaChanges = 0;
    std::vector<std::shared_ptr<const BufferLine>> lines; ///< those in view, the history included
    int cols = 0;
    Position cursor; ///< in the view; the row is past the end when it is not in view
    bool isCursorVisible = true;
    CursorStyle cursorStyle = CursorStyle::blinkBlock;
    bool isReverseVideo = false;
};

/// Lines and arena that have not changed since the snapshot before are those of it.
[[nodiscard]] ScreenSnapshot takeSnapshot(const Terminal& terminal, const ScreenSnapshot* before = nullptr);

} // namespace term
