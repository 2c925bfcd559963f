#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace orv {

enum class DiffLineKind { context, added, removed };

struct DiffLine {
    DiffLineKind kind = DiffLineKind::context;
    int oldNumber = 0;   ///< from 1; 0 where the old side has no such line
    int newNumber = 0;   ///< likewise
    qsizetype begin = 0; ///< of its text in the bytes of the FileDiff, without the mark and the line feed
    qsizetype length = 0;
    bool endsWithoutLineFeed = false;

    bool operator==(const DiffLine&) const = default;
};

struct DiffHunk {
    int oldStart = 0; ///< the number of its first line; of the line before where a side is empty
    int oldCount = 0;
    int newStart = 0;
    int newCount = 0;
    QString heading; ///< what git shows of the surrounding function
    QList<DiffLine> lines;

    bool operator==(const DiffHunk&) const = default;
};

enum class DiffChange { modified, added, deleted, renamed, copied };

/// What is behind a changed path; hunks are there for text, links and submodules.
enum class DiffContent {
    text,
    binary,
    tooLarge,  ///< more than is shown: not read, or only its beginning
    submodule, ///< the lines name commits
    symlink,   ///< the line is where it leads
    conflict,  ///< text against several sides at once; no part of it can be chosen
    folder,    ///< an untracked repository of its own
    otherKind, ///< a link in place of a file or the like: all of one is gone, all of the other is new
};

/// How one file changed.
struct FileDiff {
    QByteArray oldPath; ///< empty when the file is new
    QByteArray newPath; ///< empty when it is gone
    DiffChange change = DiffChange::modified;
    DiffContent content = DiffContent::text;
    QByteArray oldMode; ///< "100644"; empty when there is none or git did not say
    QByteArray newMode;
    QList<DiffHunk> hunks;
    QByteArray bytes; ///< the diff as git printed it; shared by all files of one diff

    bool operator==(const FileDiff&) const = default;
    [[nodiscard]] QByteArrayView text(const DiffLine& line) const {
        return QByteArrayView(bytes).sliced(line.begin, line.length);
    }
    [[nodiscard]] const QByteArray& path() const { return newPath.isEmpty() ? oldPath : newPath; }
    [[nodiscard]] int count(DiffLineKind kind) const;
    /// Whether a part of it can be staged, unstaged or discarded.
    [[nodiscard]] bool canBeDivided() const { return content == DiffContent::text && !hunks.isEmpty(); }
};

/// What `git diff` and `git show` print with prefixes "a/" and "b/" and without colour (git-diff(1), Generating patch
/// text with -p; Combined diff format). What is no part of a diff is skipped; a hunk that ends too early is kept as far
/// as it goes.
[[nodiscard]] QList<FileDiff> parseDiff(const QByteArray& bytes);

} // namespace orv
