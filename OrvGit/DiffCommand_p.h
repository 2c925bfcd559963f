#pragma once

#include "OrvGit/GitRunner.h"

namespace orv {

/// A file that is larger is not compared line by line.
inline constexpr qint64 largestDiffedFileBytes = 50 * 1024 * 1024;

/// `git <command>` with options such that it prints what `parseDiff` reads, whatever the user's configuration says:
/// names with "a/" and "b/", three lines of context, no colour, and no program of the repository's choosing.
[[nodiscard]] inline GitArguments diffCommand(const char* command) {
    return {
        "-c",
        "core.bigFileThreshold=" + QByteArray::number(largestDiffedFileBytes),
        "-c",
        "diff.suppressBlankEmpty=false",
        command,
        "--no-color",
        "--no-ext-diff",
        "--no-textconv",
        "--src-prefix=a/",
        "--dst-prefix=b/",
        "--unified=3",
        "--inter-hunk-context=0",
        "--submodule=short",
        "--find-renames",
        "--no-relative",
    };
}

} // namespace orv
