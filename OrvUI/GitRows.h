#pragma once

#include "OrvGit/GitModels.h"
#include "OrvUI/RowModel.h"

namespace orv {

// What one row of each list on the git page shows. The names of the roles stand in GitRows.cpp.

struct RepositoryRow {
    QString key;   ///< its folder
    QString name;  ///< as it lies in the project; the project's name for the project itself
    QString label; ///< the name, with what it is when it hangs on another one
    QString branch;
    int changes = 0;
    int ahead = 0;
    int behind = 0;
    bool isCurrent = false;
    QString problem; ///< why git can't read it; nothing is known of it then

    bool operator==(const RepositoryRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<RepositoryRow>>& roles();
};

/// A file on one side: staged, or not.
struct ChangeRow {
    QString key;    ///< its path, as git knows it
    QString name;   ///< its last part, fit to be shown
    QString folder; ///< what comes before; empty at the top
    QString originalName;
    QString letter; ///< "M", "A", "D", "R", "C", "T", "U" of a conflict, "?"
    QString word;   ///< "modified"
    FileChange change;
    bool isFolder = false; ///< an untracked repository of its own

    bool operator==(const ChangeRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<ChangeRow>>& roles();
};

struct BranchRow {
    QString key; ///< its full name
    QString name;
    QString upstream;
    QString subject;
    QDateTime date;
    int ahead = 0;
    int behind = 0;
    bool isUpstreamGone = false;
    bool isRemote = false;
    bool isCurrent = false;
    QString worktree; ///< where else it is checked out; empty when nowhere

    bool operator==(const BranchRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<BranchRow>>& roles();
};

struct CommitRow {
    QString key; ///< the full hash
    QString shortID;
    QString subject;
    QString author;
    QString email;
    QDateTime date;
    QString when;     ///< "2 hours ago", as of the reading
    QStringList refs; ///< short, the checked-out branch first
    bool isMerge = false;

    bool operator==(const CommitRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<CommitRow>>& roles();
};

struct StashRow {
    QString key; ///< its hash
    QString message;
    QDateTime date;
    int index = 0;

    bool operator==(const StashRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<StashRow>>& roles();
};

/// A path for people: what can't be shown, or would break the line, is replaced.
[[nodiscard]] QString shownPath(const QString& path);

/// What the page lists of a repository's changes.
struct ChangeLists {
    QList<ChangeRow> staged;
    QList<ChangeRow> unstaged;   ///< untracked files included
    QList<ChangeRow> conflicted; ///< in neither of the others
    qsizetype stagedCount = 0;   ///< also of those that are too many to be listed
    qsizetype unstagedCount = 0;

    /// A list longer than that ends there.
    static constexpr qsizetype mostRows = 5000;
    [[nodiscard]] static ChangeLists of(const QList<FileChange>& changes);
};

[[nodiscard]] QList<BranchRow> branchRows(const QList<BranchInfo>& branches);
[[nodiscard]] QList<CommitRow> commitRows(const QList<HistoryEntry>& history, const QDateTime& now);
[[nodiscard]] QList<StashRow> stashRows(const QList<StashEntry>& stashes);

} // namespace orv
