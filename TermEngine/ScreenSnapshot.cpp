#include "TermEngine/ScreenSnapshot.h"

#include <unordered_map>

namespace term {

ScreenSnapshot takeSnapshot(const Terminal& terminal, const ScreenSnapshot* before) {
    const Buffer& buffer = terminal.buffer();
    ScreenSnapshot made;
    made.arenaChanges = terminal.arena().changes();
    made.arena = before && before->arenaChanges == made.arenaChanges ? before->arena : terminal.arena().snapshot();
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
    return made;
}

} // namespace term
