#pragma once

#include "OrvCore/FileStamp.h"
#include "OrvGit/Diff.h"
#include "OrvGit/GitModels.h"
#include "OrvGit/GitRunner.h"

#include <QMap>

namespace orv {

/// The files of a work tree at one moment, committed or not.
struct WorkSnapshot {
    QString repository;
    QString head;    ///< hash of the commit; empty when there is none yet
    QString tree;    ///< hash of a tree of git, in the store of the WorkSnapshots
    int changes = 0; ///< files that were other than in the commit
    /// Changed files that are not in the tree, with what tells another state of them.
    QMap<QString, FileStamp> untaken;

    bool operator==(const WorkSnapshot&) const = default;
};

struct WorkFile {
    QByteArray path;         ///< from the repository's top, as git knows it
    QByteArray originalPath; ///< of a renamed file
    DiffChange change = DiffChange::modified;
    int added = 0; ///< lines
    int removed = 0;
    bool isBinary = false; ///< or too large: its lines are not counted

    bool operator==(const WorkFile&) const = default;
};

/// What lies between two snapshots.
struct WorkDifference {
    QList<WorkFile> files; ///< sorted by path
    QByteArray diff;       ///< of all but those that could not be taken; see parseDiff
    bool isDiffCut = false;
    QList<CommitInfo> commits; ///< that HEAD got, newest first, a hundred at the most

    bool operator==(const WorkDifference&) const = default;
};

/// Notes how a work tree is, to say later what became of it. The repository itself gets nothing written to: neither its
/// index nor its objects. Functions block, on any thread.
class WorkSnapshots {
public:
    struct Limits {
        qint64 fileBytes = qint64{20} * 1024 * 1024; ///< a larger changed file is only looked at from outside
        qint64 allBytes = qint64{512} * 1024 * 1024; ///< as are those for which there is no room any more
        qsizetype files = 20'000;
        qsizetype diffBytes = qsizetype{16} * 1024 * 1024;
    };

    /// `folder` gets the objects; it is made, and left for its owner to remove.
    WorkSnapshots(GitRunner runner, QString folder, const Limits& limits);
    WorkSnapshots(GitRunner runner, QString folder) : WorkSnapshots(std::move(runner), std::move(folder), Limits{}) {}

    /// `repository`: the top of a work tree.
    [[nodiscard]] GitOutcome<WorkSnapshot> take(const QString& repository) const;
    /// Both of one repository. `prefix`, empty or with a slash at its end, is put before every path.
    [[nodiscard]] GitOutcome<WorkDifference> between(
        const WorkSnapshot& before, const WorkSnapshot& after, const QByteArray& prefix = {}) const;
    /// The commit as a snapshot, of which nothing was other than committed.
    [[nodiscard]] static WorkSnapshot ofCommit(const QString& repository, const QString& commit);

private:
    [[nodiscard]] GitOutcome<GitRunner> runnerFor(const QString& repository) const;

    GitRunner m_runner;
    QString m_folder;
    Limits m_limits;
};

/// What `git diff --raw --numstat -z` prints.
[[nodiscard]] QList<WorkFile> parseWorkFiles(const QByteArray& bytes);

/// The tops of the work trees that hold, or lie in, the folder; the one that holds it first.
[[nodiscard]] QStringList workTreesOf(const QString& folder);

} // namespace orv
