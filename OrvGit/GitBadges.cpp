#include "OrvGit/GitBadges.h"

#include "OrvCore/BackgroundThread.h"
#include "OrvGit/GitService.h"
#include "OrvGit/ProjectRepositories.h"

#include <QPromise>

#include <algorithm>
#include <mutex>

using namespace Qt::StringLiterals;

namespace orv {

/// One project's badge as it comes together.
struct GitBadges::Reading {
    QPromise<GitBadge> promise;
    std::mutex mutex;
    GitBadge sum;
    qsizetype left = 0; ///< repositories that are not read yet
};

GitBadges::GitBadges(int threads, const EnvironmentEntries& extraEnvironment)
    : m_runner{extraEnvironment, GitPurpose::background, GitCancellation()} {
    m_pool.setObjectName(u"git badges"_s);
    m_pool.setMaxThreadCount(threads > 0 ? threads : 2 * std::max(2, QThread::idealThreadCount()));
}

GitBadges::~GitBadges() {
    m_runner.cancellation->cancel();
    m_pool.waitForDone();
}

void GitBadges::start(std::function<void()> work, int priority) {
    m_pool.start(
        [work = std::move(work)] {
            becomeBackgroundThread();
            work();
        },
        priority);
}

QFuture<GitBadge> GitBadges::read(const QString& projectRoot) {
    const auto reading = std::make_shared<Reading>();
    reading->promise.start();
    start([this, reading, projectRoot] {
        begin(
            reading, m_runner.cancellation->isCancelled() ? QStringList() : GitService::findRepos(projectRoot),
            projectRoot);
    });
    return reading->promise.future();
}

QFuture<QList<QStringList>> GitBadges::repositories(const QStringList& projectRoots, const QString& scanRoot) {
    const auto promise = std::make_shared<QPromise<QList<QStringList>>>();
    promise->start();
    start([this, promise, projectRoots, scanRoot] {
        QList<QStringList> found;
        const QList<ProjectRepositories> each = ProjectRepositories::ofEach(m_runner, projectRoots, scanRoot);
        for (const ProjectRepositories& repositories : each) {
            found.append(repositories.own);
        }
        if (!m_runner.cancellation->isCancelled()) {
            promise->addResult(found);
        }
        promise->finish();
    });
    return promise->future();
}

QFuture<GitBadge> GitBadges::readRepositories(const QStringList& repositories, const QString& projectRoot) {
    const auto reading = std::make_shared<Reading>();
    reading->promise.start();
    begin(reading, repositories, projectRoot);
    return reading->promise.future();
}

void GitBadges::begin(
    const std::shared_ptr<Reading>& reading, const QStringList& repositories, const QString& projectRoot) {
    reading->left = repositories.size();
    reading->sum.repoCount = static_cast<int>(repositories.size());
    if (repositories.isEmpty()) {
        finish(*reading);
    }
    for (const QString& repository : repositories) {
        const QString below = wayBelow(repository, projectRoot);
        enqueue(repository, [this, reading, repository, below] { readRepository(reading, repository, below); });
    }
}

void GitBadges::enqueue(const QString& repository, const std::function<void()>& job) {
    const std::scoped_lock lock(m_mutex);
    const bool isRunning = m_waiting.contains(repository);
    m_waiting[repository].enqueue(job);
    if (!isRunning) {
        startNext(repository);
    }
}

/// The mutex is held.
void GitBadges::startNext(const QString& repository) {
    const auto work = [this, repository, job = m_waiting[repository].dequeue()] {
        job();
        const std::scoped_lock lock(m_mutex);
        if (m_waiting[repository].isEmpty()) {
            m_waiting.remove(repository);
        } else {
            startNext(repository);
        }
    };
    // Before the projects whose folders are still to be searched: each of them is complete the sooner.
    constexpr int beforeSearches = 1;
    start(work, beforeSearches);
}

void GitBadges::finish(Reading& reading) const {
    if (!m_runner.cancellation->isCancelled()) {
        reading.promise.addResult(reading.sum);
    }
    reading.promise.finish();
}

void GitBadges::readRepository(
    const std::shared_ptr<Reading>& reading, const QString& repository, const QString& below) const {
    int changes = 0;
    const auto status = GitService(m_runner).statusCounts(repository, changes, below);
    const std::scoped_lock lock(reading->mutex);
    if (status) {
        reading->sum.changes += changes;
        reading->sum.ahead += status->ahead;
        reading->sum.behind += status->behind;
        if (reading->sum.repoCount == 1) {
            reading->sum.branch = status->branch.value_or(QString());
        }
    } else {
        ++reading->sum.unreadCount;
    }
    if (--reading->left == 0) {
        finish(*reading);
    }
}

} // namespace orv
