#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// A changed, staged, untracked or conflicted file. Paths are relative to the repository's root (see GitPath).
struct FileChange {
    QString path;
    char index = '.';     ///< the staged state (git-status(1), Short Format, column X); "." is unmodified
    char worktree = '.';  ///< the unstaged state (column Y)
    QString originalPath; ///< before a rename, or of what was copied; empty otherwise

    bool operator==(const FileChange&) const = default;
    [[nodiscard]] bool isUntracked() const { return index == '?'; }
    [[nodiscard]] bool isStaged() const { return index != '.' && index != '?' && index != ' '; }
    /// Both sides changed it, and nobody has said yet what holds.
    [[nodiscard]] bool isConflicted() const;
    /// The paths that an action on this change is about: for a rename both.
    [[nodiscard]] QStringList touchedPaths() const;
    /// The paths that staging it is about. The old name of what is renamed in the index already is nowhere any more.
    [[nodiscard]] QStringList stagedPaths() const;
};

} // namespace orv

Q_DECLARE_TYPEINFO(orv::FileChange, Q_RELOCATABLE_TYPE);

namespace orv {

struct RepoStatus {
    std::optional<QString> branch;   ///< absent when HEAD is detached
    std::optional<QString> upstream; ///< "origin/main"; absent when none is configured
    int ahead = 0;                   ///< commits that the upstream does not have; 0 when unknown
    int behind = 0;                  ///< commits that only the upstream has; 0 when unknown
    QList<FileChange> changes;       ///< in git's order
    bool isDetached = false;
    bool hasCommits = false;

    bool operator==(const RepoStatus&) const = default;
    /// Those that an action on the paths is about. The old name of a rename means the rename, unless there is a change
    /// of its own by now.
    [[nodiscard]] QList<FileChange> changesOf(const QStringList& paths) const;
};

struct CommitInfo {
    QString id; ///< the full hash
    QString subject;
    QString author;
    QDateTime date; ///< when it was written

    bool operator==(const CommitInfo&) const = default;
};

/// A commit with what a history shows beside it.
struct HistoryEntry {
    CommitInfo commit;
    QString email;
    QStringList parents; ///< full hashes, the first parent first
    QStringList refs;    ///< full names of what points at it ("refs/heads/main", "HEAD"), the checked-out branch first

    bool operator==(const HistoryEntry&) const = default;
};

/// Which part of a history: a page of it, of one file, from one ref or hash on.
struct HistoryQuery {
    int limit = 100;
    int skip = 0;
    QString from; ///< empty for HEAD
    QString path; ///< empty for all
};

struct BranchInfo {
    QString name; ///< "main", "origin/main"
    QString id;   ///< hash of its last commit
    QString subject;
    QDateTime date;   ///< when the last commit was written
    QString upstream; ///< short; empty when none is configured
    int ahead = 0;
    int behind = 0;
    bool isUpstreamGone = false; ///< configured, and no longer there
    bool isRemote = false;
    bool isCurrent = false;
    QString worktree; ///< where it is checked out; empty when nowhere

    bool operator==(const BranchInfo&) const = default;
};

struct StashEntry {
    int index = 0; ///< 0 is the newest
    QString id;
    QString message;
    QDateTime date;

    bool operator==(const StashEntry&) const = default;
};

struct GitIdentity {
    std::optional<QString> name;
    std::optional<QString> email;

    bool operator==(const GitIdentity&) const = default;
};

/// Which configuration a setting is read from or written to: `--global` or `--local`.
enum class GitScope { global, repo };

/// How a pull takes in what the remote has.
enum class PullStrategy { ffOnly, merge, rebase };

/// What a project's card shows of its repositories, all of them summed.
struct GitBadge {
    int changes = 0;
    int ahead = 0;
    int behind = 0;
    int repoCount = 0;
    QString branch;      ///< of the only repository; empty when there are several, or its HEAD is detached
    int unreadCount = 0; ///< of `repoCount`: those whose status could not be read

    bool operator==(const GitBadge&) const = default;
};

/// What was begun in a repository and waits for someone.
enum class GitOperation { none, merge, rebase, applyMailbox, cherryPick, revert, bisect };

struct OperationState {
    GitOperation operation = GitOperation::none;
    int step = 0;   ///< of a rebase, from 1
    int steps = 0;  ///< 0 when it is not known
    QString branch; ///< that a rebase is about; short, empty when unknown
    QStringList conflicts;

    bool operator==(const OperationState&) const = default;
    /// Whether it goes through commits, of which one may be left out.
    [[nodiscard]] bool canSkip() const {
        return operation == GitOperation::rebase || operation == GitOperation::applyMailbox ||
               operation == GitOperation::cherryPick || operation == GitOperation::revert;
    }
};

} // namespace orv
