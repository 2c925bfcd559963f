#include "OrvGit/RepositoryWatch.h"

#include "OrvCore/Async.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFileInfo>
#include <QPromise>

#include <algorithm>
#include <array>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

/// git replaces the index, HEAD and refs one after the other.
constexpr auto settleTime = 100ms;
constexpr auto clockStep = 10ms;
/// A repository with more folders of refs is told of its other changes.
constexpr int mostRefFolders = 200;

/// In the folder of a work tree; each is replaced, made or removed by its name, so its folder tells.
constexpr std::array worktreeFiles{"HEAD"_L1,        "index"_L1,     "MERGE_HEAD"_L1,   "CHERRY_PICK_HEAD"_L1,
                                   "REVERT_HEAD"_L1, "sequencer"_L1, "rebase-merge"_L1, "rebase-apply"_L1,
                                   "BISECT_LOG"_L1};

} // namespace

RepositoryWatch::RepositoryWatch(QObject* parent) : QObject(parent) {
    m_pool.setObjectName(u"git watch"_s);
    m_pool.setMaxThreadCount(1);
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleTime);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this](const QString& folder) {
        m_due.unite(m_repositoriesOf.value(folder));
        lookSoon();
    });
    connect(&m_settle, &QTimer::timeout, this, &RepositoryWatch::lookAtDue);
}

RepositoryWatch::~RepositoryWatch() {
    m_pool.waitForDone();
}

QStringList RepositoryWatch::repositories() const {
    QStringList found;
    for (auto each = m_repositories.begin(); each != m_repositories.end(); ++each) {
        if (!each->state.isEmpty()) {
            found.append(each.key());
        }
    }
    return found;
}

bool RepositoryWatch::Watched::hasChangedSince(qint64 ms) const {
    // File systems take their time from a clock that stands still for some milliseconds.
    const qint64 limitNs = (ms - clockStep.count()) * 1'000'000;
    return std::ranges::any_of(state, [limitNs](const FileStamp& stamp) { return stamp.changedNs > limitNs; });
}

bool RepositoryWatch::Watched::isOtherThan(const Watched& before) const {
    return std::ranges::any_of(folders, [&](const QString& folder) {
        const FileStamp was = before.state.value(folder);
        const FileStamp is = state.value(folder);
        return was != FileStamp() && is != FileStamp() && (was.inode != is.inode || was.device != is.device);
    });
}

void RepositoryWatch::setRepositories(const QStringList& folders) {
    ORV_ASSERT_MAIN_THREAD();
    Looks wanted;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (const QString& folder : folders) {
        const auto known = m_repositories.constFind(folder);
        wanted.insert(folder, known != m_repositories.cend() ? *known : Watched{{}, {}, now});
        if (known == m_repositories.cend() || known->state.isEmpty()) {
            m_due.insert(folder);
        }
    }
    m_refused.clear();
    m_repositories = std::move(wanted);
    follow();
    lookAtDue();
}

void RepositoryWatch::lookSoon() {
    // Not put off again and again: a repository that is busy all the time is told of, too.
    if (!m_due.isEmpty() && !m_settle.isActive()) {
        m_settle.start();
    }
}

void RepositoryWatch::lookAtDue() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_isLooking || m_due.isEmpty()) {
        return;
    }
    m_isLooking = true;
    const auto promise = std::make_shared<QPromise<Looks>>();
    promise->start();
    m_pool.start([promise, due = std::exchange(m_due, {})] {
        Looks looks;
        for (const QString& repository : due) {
            looks.insert(repository, look(repository));
        }
        promise->addResult(std::move(looks));
        promise->finish();
    });
    onFinished(promise->future(), this, [this](const Looks& looks) { takeIn(looks); });
}

RepositoryWatch::Watched RepositoryWatch::look(const QString& repository) {
    const auto layout = RepositoryLayout::of(repository);
    Watched watched;
    if (!layout) {
        // What is made there anew is made piece by piece.
        for (const QString& place : {repository, repository + u"/.git"_s}) {
            if (QFileInfo(place).isDir()) {
                watched.folders.append(place);
            }
        }
        return watched;
    }
    // Of a folder that is moved away, only the one above it tells.
    watched.folders = QStringList{repository};
    if (layout->gitDirectory != repository) {
        watched.folders.append(layout->gitDirectory);
    }
    for (const QLatin1StringView name : worktreeFiles) {
        const QString path = layout->gitDirectory + u'/' + name;
        watched.state.insert(path, FileStamp::of(path));
    }
    if (layout->commonDirectory != layout->gitDirectory) {
        watched.folders.append(layout->commonDirectory);
    }
    const QString packed = layout->commonDirectory + u"/packed-refs"_s;
    watched.state.insert(packed, FileStamp::of(packed));
    // A ref is written by another name and renamed, which shows in its folder.
    QStringList refs{layout->commonDirectory + u"/refs"_s};
    QDirIterator folder(refs.front(), QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (folder.hasNext() && refs.size() < mostRefFolders) {
        refs.append(folder.next());
    }
    for (const QString& path : refs) {
        watched.state.insert(path, FileStamp::of(path));
    }
    watched.folders += refs;
    return watched;
}

void RepositoryWatch::takeIn(const Looks& looks) {
    m_isLooking = false;
    QStringList differing;
    for (auto now = looks.begin(); now != looks.end(); ++now) {
        const auto known = m_repositories.find(now.key());
        if (known == m_repositories.end()) {
            continue;
        }
        // What was no repository at first is not waited for.
        const bool isWaitedFor = !known->folders.isEmpty();
        if (known->state == now->state) {
            known->folders = isWaitedFor ? now->folders : QStringList();
            continue;
        }
        if (isWaitedFor || now->hasChangedSince(known->sinceMs)) {
            differing.append(now.key());
        }
        // The watch would stay with the folder that had the name before.
        if (now->isOtherThan(*known)) {
            m_watcher.removePaths(known->folders);
        }
        const QSet<QString> there(now->folders.begin(), now->folders.end());
        for (const QString& folder : known->folders) {
            if (!there.contains(folder)) {
                m_refused.remove(folder);
            }
        }
        *known = *now;
    }
    follow();
    for (const QString& repository : differing) {
        Q_EMIT changed(repository);
    }
    lookSoon();
}

void RepositoryWatch::follow() {
    m_repositoriesOf.clear();
    for (auto each = m_repositories.begin(); each != m_repositories.end(); ++each) {
        for (const QString& folder : each->folders) {
            m_repositoriesOf[folder].insert(each.key());
        }
    }
    QStringList gone;
    const QStringList now = m_watcher.directories();
    for (const QString& folder : now) {
        if (!m_repositoriesOf.contains(folder)) {
            gone.append(folder);
        }
    }
    if (!gone.isEmpty()) {
        m_watcher.removePaths(gone);
        m_refused.clear(); // there is room now
    }
    const QSet<QString> watched(now.begin(), now.end());
    QStringList added;
    for (auto each = m_repositoriesOf.begin(); each != m_repositoriesOf.end(); ++each) {
        if (!watched.contains(each.key()) && !m_refused.contains(each.key())) {
            added.append(each.key());
        }
    }
    watchAll(added);
}

void RepositoryWatch::watchAll(const QStringList& folders) {
    bool isFull = false;
    for (const QString& folder : folders) {
        if (!isFull && m_watcher.addPath(folder)) {
            // What happened before the folder was watched.
            m_due.unite(m_repositoriesOf.value(folder));
        } else {
            m_refused.insert(folder);
            // One that is there and can be read is refused where the system watches no more, and says so each time.
            isFull = isFull || QFileInfo(folder).isReadable();
        }
    }
}

} // namespace orv
