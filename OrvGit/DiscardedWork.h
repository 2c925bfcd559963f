#pragma once

#include "OrvGit/GitService.h"

#include <QHash>

namespace orv {

/// What a discard took, kept as two commits under a ref of their own, "refs/orvlauncher/discarded/": a way back, here
/// and by hand. The newest of them stay.
struct DiscardedWork {
    QString repository;
    QString workTreeCommit;
    QString indexCommit;
    QStringList staged;                    ///< paths that were tracked: the index has what of them was staged
    QStringList changed;                   ///< paths that were in the work tree other than in the index, or untracked
    QStringList removed;                   ///< paths that were in the index and not in the work tree
    QHash<QString, QByteArray> afterwards; ///< how each of them was once it was discarded

    /// Before the paths are discarded. Refused in a conflict, and for more than is worth keeping twice.
    [[nodiscard]] static GitOutcome<DiscardedWork> keep(
        const GitService& service, const QString& repository, const QStringList& paths);
    /// Once they are discarded, or parts of them.
    [[nodiscard]] GitOutcome<void> noteAfterwards(const GitService& service);
    /// As it was. Refused when something else was done to one of the files since that was noted.
    [[nodiscard]] GitOutcome<void> bringBack(const GitService& service) const;

    static constexpr qint64 mostBytes = 64LL * 1024 * 1024;
    static constexpr int mostKept = 20;
};

} // namespace orv
