#include "FuzzInput.h"
#include "OrvGit/Patch.h"

/// A diff, and patches from lines that are chosen by the input's first bytes: a patch is a diff again, and its hunk
/// says how many lines it has.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const uint32_t chosen = input.number();
    const auto direction = input.byte() % 2 == 0 ? orv::PatchDirection::forward : orv::PatchDirection::reverse;
    const std::string_view rest = input.take(size);
    const QByteArray bytes(rest.data(), static_cast<qsizetype>(rest.size()));
    for (const orv::FileDiff& file : orv::parseDiff(bytes)) {
        orv::DiffSelection selection;
        for (qsizetype hunk = 0; hunk < file.hunks.size(); ++hunk) {
            const auto& lines = file.hunks[hunk].lines;
            for (qsizetype i = 0; i < lines.size(); ++i) {
                require(lines[i].begin >= 0 && lines[i].begin + lines[i].length <= bytes.size());
                require(!file.text(lines[i]).contains('\n'));
                if ((chosen >> ((hunk + i) % 32) & 1U) != 0) {
                    selection[hunk].insert(i);
                }
            }
        }
        // So large a number may be too large once lines have been added before it.
        constexpr int largestStart = 100'000'000;
        const bool isLarge = std::ranges::any_of(file.hunks, [](const orv::DiffHunk& hunk) {
            return hunk.oldStart > largestStart || hunk.newStart > largestStart;
        });
        const auto patch = orv::makePatch(file, selection, direction);
        if (!patch || isLarge) {
            continue;
        }
        const auto again = orv::parseDiff(*patch);
        require(again.size() == 1 && !again[0].hunks.isEmpty() && again[0].path() == file.path());
        for (const orv::DiffHunk& hunk : again[0].hunks) {
            qsizetype added = 0;
            qsizetype removed = 0;
            for (const orv::DiffLine& line : hunk.lines) {
                added += line.kind == orv::DiffLineKind::added ? 1 : 0;
                removed += line.kind == orv::DiffLineKind::removed ? 1 : 0;
            }
            require(hunk.oldCount == hunk.lines.size() - added && hunk.newCount == hunk.lines.size() - removed);
            require(added + removed > 0);
        }
    }
    return 0;
}
