#include "OrvGit/RepositoryWatch.h"

#include "OrvCore/Async.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDirIterator>
#include <QSet>

#include <array>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

/// git replaces the index, HEAD and refs one after the other.
constexpr auto settleTime = 100ms;
/// A repository with more folders of refs is told of its other changes.
constexpr int mostRefFolders = 200;

/// In the folder of a work tree; each is replaced, made or removed by its name, so its folder tells.
constexpr std::array worktreeFiles{"HEAD"_L1,        "index"_L1,        "MERGE_HEAD"_L1,   "CHERRY_PICK_HEAD"_L1,
                                   "REVERT_HEAD"_L1, "rebase-merge"_L1, "rebase-apply"_L1, "BISECT_LOG"_L1};

} // namespace

RepositoryWatch::RepositoryWatch(QObject* parent) : QObject(parent) {
    m_settle.setSingleShot(true);
    m_settle.setInterval(settleTime);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        // Not put off again and again: a repository that is busy all the time is told of, too.
        if (!m_settle.isActive()) {
            m_settle.start();
        }
    });
    connect(&m_settle, &QTimer::timeout, this, &RepositoryWatch::compare);
}

void RepositoryWatch::setRepositories(const QStringList& folders) {
    ORV_ASSERT_MAIN_THREAD();
    QHash<QString, Watched> wanted;
    for (const QString& folder : folders) {
        const auto known = m_repositories.constFind(folder);
        Watched watched = known != m_repositories.cend() ? *known : look(folder);
        if (!watched.folders.isEmpty()) {
            wanted.insert(folder, std::move(watched));
        }
    }
    m_repositories = std::move(wanted);
    follow();
}

RepositoryWatch::Watched RepositoryWatch::look(const QString& repository) {
    const auto layout = RepositoryLayout::of(repository);
    if (!layout) {
        return {};
    }
    Watched watched;
    watched.folders = {layout->gitDirectory};
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

void RepositoryWatch::follow() {
    QSet<QString> wanted;
    for (const Watched& watched : std::as_const(m_repositories)) {
        wanted.unite(QSet<QString>(watched.folders.begin(), watched.folders.end()));
    }
    const QStringList directories = m_watcher.directories();
    const QSet<QString> now(directories.begin(), directories.end());
    const QStringList gone = (now - wanted).values();
    const QStringList added = (wanted - now).values();
    if (!gone.isEmpty()) {
        m_watcher.removePaths(gone);
    }
    if (!added.isEmpty()) {
        m_watcher.addPaths(added);
        // What happened before they were watched.
        m_settle.start();
    }
}

void RepositoryWatch::compare() {
    ORV_ASSERT_MAIN_THREAD();
    QStringList differing;
    for (auto each = m_repositories.begin(); each != m_repositories.end(); ++each) {
        Watched now = look(each.key());
        if (now.state != each->state) {
            differing.append(each.key());
            *each = std::move(now);
        }
    }
    follow();
    for (const QString& repository : differing) {
        Q_EMIT changed(repository);
    }
}

} // namespace orv
