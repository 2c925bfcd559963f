#pragma once

#include "OrvGit/GitService.h"

namespace orv {

/// What a discard took, kept as two commits under a ref of their own, "refs/orvlauncher/discarded/": a way back, here
/// and by hand. The newest of them stay.
struct DiscardedWork {
    QString repository;
    QString workTreeCommit;
    QString indexCommit;
    QStringList staged;  ///< paths that were tracked: the index has what of them was staged
    QStringList changed; ///< paths that were in the work tree other than in the index, or untracked

    /// Before the paths are discarded. Refused in a conflict, and for more than is worth keeping twice.
    [[nodiscard]] static GitOutcome<DiscardedWork> keep(
        const GitService& service, const QString& repository, const QStringList& paths);
    /// As it was. Refused when something else was done to one of the files since.
    [[nodiscard]] GitOutcome<void> bringBack(const GitService& service) const;

    static constexpr qint64 mostBytes = 64LL * 1024 * 1024;
    static constexpr int mostKept = 20;
};

} // namespace orv
