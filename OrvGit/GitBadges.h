#pragma once

#include "OrvGit/GitModels.h"
#include "OrvGit/GitRunner.h"

#include <QFuture>
#include <QHash>
#include <QQueue>
#include <QThreadPool>

#include <functional>
#include <mutex>

namespace orv {

/// Reads badges in the background: a `git status` for every repository under a project, several at once, in a pool of
/// its own. The destructor ends those that run.
class GitBadges {
public:
    /// Twice as many at once as there are cores, unless `threads` says another number: a status waits for the disk, and
    /// for its turn on a busy machine.
    explicit GitBadges(int threads = 0, const EnvironmentEntries& extraEnvironment = {});
    ~GitBadges();
    Q_DISABLE_COPY_MOVE(GitBadges)

    /// Any thread. A repository that has no status, such as a bare one, counts as unread. Without a result when this
    /// object is destroyed first.
    [[nodiscard]] QFuture<GitBadge> read(const QString& projectRoot);
    /// Each project's own ones (ProjectRepositories), which is the first half of `read`.
    [[nodiscard]] QFuture<QList<QStringList>> repositories(const QStringList& projectRoots, const QString& scanRoot);
    /// As `read`, of repositories that are known already. In one that the project lies in, only the changes below the
    /// project are counted.
    [[nodiscard]] QFuture<GitBadge> readRepositories(const QStringList& repositories, const QString& projectRoot);

private:
    struct Reading;
    /// Behind the threads of others, and so is git.
    void start(std::function<void()> work, int priority = 0);
    void begin(const std::shared_ptr<Reading>& reading, const QStringList& repositories, const QString& projectRoot);
    void finish(Reading& reading) const;
    void readRepository(const std::shared_ptr<Reading>& reading, const QString& repository, const QString& below) const;
    /// One job of a repository runs at a time, the others in their order after it. Unlike in a wait for GitService's
    /// own turn, none of them holds a thread meanwhile.
    void enqueue(const QString& repository, const std::function<void()>& job);
    void startNext(const QString& repository);

    std::mutex m_mutex;
    QHash<QString, QQueue<std::function<void()>>> m_waiting; ///< by repository that a job runs of
    GitRunner m_runner;
    QThreadPool m_pool;
};

} // namespace orv
