#pragma once

#include "OrvGit/Diff.h"

#include <map>
#include <optional>
#include <set>

namespace orv {

/// Chosen lines of a file's diff: indices of lines by the index of their hunk. Lines of context in it mean nothing.
using DiffSelection = std::map<qsizetype, std::set<qsizetype>>;

/// Every line of one hunk.
[[nodiscard]] DiffSelection wholeHunk(const FileDiff& diff, qsizetype hunk);

/// Which side of the diff is there when a patch is applied: the old one, or, with `git apply --reverse`, the new one.
enum class PatchDirection { forward, reverse };

/// A patch for `git apply` with the chosen lines only. A line that is not chosen stands as it is on the side that is
/// there: as context, or not at all. Nothing when no line of a change is chosen, or the diff can't be divided.
[[nodiscard]] std::optional<QByteArray> makePatch(
    const FileDiff& diff, const DiffSelection& selection, PatchDirection direction);

} // namespace orv
