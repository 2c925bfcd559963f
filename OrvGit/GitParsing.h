#pragma once

#include "OrvGit/GitModels.h"

#include <QByteArrayView>

/// What git prints for machines, as values. What can't be read is left out; nothing here fails.
namespace orv::GitParsing {

/// `git status --porcelain=v2 --branch -z` (git-status(1), Porcelain Format Version 2).
[[nodiscard]] RepoStatus status(QByteArrayView output);
/// How many changes `status` would list, without making them.
[[nodiscard]] RepoStatus statusCounts(QByteArrayView output, int& changes);

/// A line a commit, its fields separated by the unit separator: hash, subject, author, seconds since 1970.
[[nodiscard]] QList<CommitInfo> log(QByteArrayView output);
/// As `log`, with e-mail, parents and decoration (`%D`, full names) after it; records end with NUL.
[[nodiscard]] QList<HistoryEntry> history(QByteArrayView output);

/// A line a name. What stands for a detached HEAD in the list is no name.
[[nodiscard]] QStringList branches(QByteArrayView output);
/// The fields of `branchFormat` for `git for-each-ref`, a line a branch.
[[nodiscard]] QList<BranchInfo> branchInfos(QByteArrayView output);
inline constexpr const char* branchFormat =
    "--format=%(refname)%1f%(objectname)%1f%(subject)%1f%(authordate:unix)%1f%(upstream:short)%1f%(upstream:track)%1f"
    "%(HEAD)%1f%(worktreepath)%1f%(symref)";

/// A line a stash, newest first: hash, message, seconds since 1970.
[[nodiscard]] QList<StashEntry> stashes(QByteArrayView output);
/// Paths that end with NUL each.
[[nodiscard]] QStringList paths(QByteArrayView output);

} // namespace orv::GitParsing
