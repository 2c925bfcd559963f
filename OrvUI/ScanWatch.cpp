#include "OrvUI/ScanWatch.h"

#include "OrvCore/Async.h"
#include "OrvCore/BackgroundThread.h"
#include "OrvCore/FileStamp.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Pool_p.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// A scan looks no deeper for projects.
constexpr int deepest = 4;
/// File systems take their time from a clock that stands still for some milliseconds.
constexpr std::chrono::milliseconds clockStep{10};
/// How often the time that a comparison takes may pass until the next one.
constexpr int restFactor = 20;

QString newsOf(const QList<Project>& listed, const QList<Project>& found) {
    const auto without = [](const QList<Project>& all, const QList<Project>& those) {
        QSet<QString> ids;
        for (const Project& each : those) {
            ids.insert(each.id);
        }
        QStringList names;
        for (const Project& each : all) {
            if (!ids.contains(each.id)) {
                names.append(each.name);
            }
        }
        return names;
    };
    const QStringList added = without(found, listed);
    const QStringList gone = without(listed, found);
    if (added.isEmpty() && gone.isEmpty()) {
        return found == listed ? QString() : ScanWatch::tr("What can be run has changed");
    }
    QStringList parts;
    if (!added.isEmpty()) {
        parts.append(
            added.size() == 1 ? ScanWatch::tr("%1 is new").arg(added.first())
                              : ScanWatch::tr("%1 projects are new").arg(added.size()));
    }
    if (!gone.isEmpty()) {
        parts.append(
            gone.size() == 1 ? ScanWatch::tr("%1 is gone").arg(gone.first())
                             : ScanWatch::tr("%1 projects are gone").arg(gone.size()));
    }
    return parts.join(ScanWatch::tr(", "));
}

} // namespace

ScanWatch::ScanWatch(QObject* parent) : QObject(parent) {
    ORV_ASSERT_MAIN_THREAD();
    m_pool.setObjectName(u"scan watch"_s);
    m_pool.setMaxThreadCount(1);
    m_settle.setSingleShot(true);
    connect(&m_settle, &QTimer::timeout, this, [this] { look(false); });
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        m_isDue = true;
        // Not put off again and again: a clone takes its time.
        if (!m_isBusy && !m_settle.isActive()) {
            m_settle.start(std::max(settleTime, m_rest));
        }
    });
}

ScanWatch::~ScanWatch() {
    if (m_cancellation) {
        m_cancellation->cancel();
    }
    m_pool.waitForDone();
}

void ScanWatch::setModel(AppModel* model) {
    ORV_ASSERT_MAIN_THREAD();
    if (model == m_model) {
        return;
    }
    if (m_model) {
        m_model->disconnect(this);
    }
    m_model = model;
    if (model != nullptr) {
        connect(model, &AppModel::isScanningChanged, this, &ScanWatch::takeInScan);
    }
    takeInScan();
    Q_EMIT modelChanged();
}

/// What was compared with the old list is of no use, whether a scan begins or ends.
void ScanWatch::takeInScan() {
    ++m_generation;
    if (m_cancellation) {
        m_cancellation->cancel();
    }
    m_settle.stop();
    if (m_model && m_model->isScanning()) {
        m_scanBegan = QDateTime::currentMSecsSinceEpoch();
    }
    if (m_model && !m_model->isScanning() && m_model->hasScanned()) {
        setNews({});
        look(true);
    }
}

ScanWatch::Place ScanWatch::placeOf(const QString& folder) {
    const FileStamp stamp = FileStamp::of(folder);
    return {stamp.device, stamp.inode};
}

ScanWatch::Folders ScanWatch::foldersOf(const Request& request, const ScanCancellation& cancellation) {
    Folders found;
    found.root = placeOf(request.root);
    const QSet<QString> skipped = ProjectScanner::defaultSkips();
    QStringList level{QFileInfo(request.root).canonicalFilePath()};
    level.removeAll(QString()); // it is not there
    for (int depth = 0; depth <= deepest && !level.isEmpty(); ++depth) {
        QStringList next;
        for (const QString& folder : std::as_const(level)) {
            if (found.names.size() >= request.limit || cancellation.isCancelled()) {
                found.isWhole = false;
                return found;
            }
            if (!QFileInfo(folder).isReadable()) {
                continue;
            }
            const QFileInfoList entries = QDir(folder).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
            size_t names = 0;
            const bool isProject = depth > 0 && request.projects.contains(folder);
            for (const QFileInfo& entry : entries) {
                names = qHash(entry.fileName(), names);
                if (!isProject && entry.isDir() && !entry.isSymLink() && !skipped.contains(entry.fileName())) {
                    next.append(entry.filePath());
                }
            }
            found.names.insert(folder, names);
            found.newestMs = std::max(found.newestMs, QFileInfo(folder).lastModified().toMSecsSinceEpoch());
        }
        level = next;
    }
    // Nothing tells when it comes back.
    found.isWhole = !found.names.isEmpty();
    return found;
}

void ScanWatch::lookIfBlind() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_isBusy || !m_model || m_model->isScanning() || !m_model->hasScanned()) {
        return;
    }
    if (m_isBlind) {
        look(false);
    } else if (!m_asksRoot) {
        lookAtRoot();
    }
}

void ScanWatch::lookAtRoot() {
    m_asksRoot = true;
    const auto work = [root = m_model->settings().settings().scanRoot] {
        becomeBackgroundThread();
        return placeOf(root);
    };
    onFinished(runIn(m_pool, work), this, [this, at = m_generation](const Place& root) {
        m_asksRoot = false;
        if (at == m_generation && m_model && root != m_root) {
            m_isDue = true;
            look(false);
        }
    });
}

void ScanWatch::look(bool isFirst) {
    if (!m_model || m_model->isScanning() || (m_isBusy && !isFirst)) {
        return;
    }
    m_isBusy = true;
    m_isDue = false;
    Request request{.root = m_model->settings().settings().scanRoot, .projects = {}, .limit = mostFolders};
    for (const Project& project : m_model->projects()) {
        request.projects.insert(project.root);
    }
    m_cancellation = std::make_shared<ScanCancellation>();
    const auto work = [request, cancellation = m_cancellation] {
        becomeBackgroundThread(); // its pool is for this alone
        return foldersOf(request, *cancellation);
    };
    onFinished(runIn(m_pool, work), this, [this, isFirst, at = m_generation](const Folders& folders) {
        if (at != m_generation || !m_model) {
            return;
        }
        // Where not all can be seen, the names say nothing. The scan may have passed what came while it ran.
        const bool isSame = isFirst ? folders.newestMs < m_scanBegan - clockStep.count()
                                    : folders.names == m_names && folders.root == m_root && !m_isBlind;
        follow(folders);
        if (isSame) {
            m_isBusy = false;
            if (m_isDue) {
                m_settle.start(std::max(settleTime, m_rest));
            }
        } else {
            compare();
        }
    });
}

void ScanWatch::compare() {
    ProjectScanner scanner;
    scanner.overrides = std::make_shared<OverrideStore>(m_model->overrides().filePath());
    m_cancellation = std::make_shared<ScanCancellation>();
    const auto work = [scanner, root = m_model->settings().settings().scanRoot, cancellation = m_cancellation] {
        becomeBackgroundThread();
        return scanner.scan(root, cancellation.get());
    };
    QElapsedTimer clock;
    clock.start();
    onFinished(runIn(m_pool, work), this, [this, clock, at = m_generation](const ScanResult<QList<Project>>& found) {
        if (at != m_generation || !m_model) {
            return;
        }
        m_isBusy = false;
        m_rest = std::chrono::milliseconds(clock.elapsed()) * restFactor;
        // What was said before may be true no longer, and nobody knows.
        setNews(found ? newsOf(m_model->projects(), *found) : QString());
        m_isBlind = m_isBlind || !found;
        if (m_isDue) {
            m_settle.start(std::max(settleTime, m_rest));
        }
    });
}

void ScanWatch::follow(const Folders& folders) {
    m_names = folders.names;
    QStringList gone;
    const QStringList watched = m_watcher.directories();
    // Of another one below the same name, the folders are others too: what is watched went away with the old one.
    const bool isOther = std::exchange(m_root, folders.root) != folders.root;
    for (const QString& folder : watched) {
        if (isOther || !m_names.contains(folder)) {
            gone.append(folder);
        }
    }
    if (!gone.isEmpty()) {
        m_watcher.removePaths(gone);
    }
    const QStringList kept = m_watcher.directories();
    const QSet<QString> known(kept.begin(), kept.end());
    m_isBlind = !folders.isWhole;
    for (auto each = m_names.begin(); each != m_names.end(); ++each) {
        if (known.contains(each.key())) {
            continue;
        }
        if (m_watcher.addPath(each.key())) {
            m_isDue = true; // what was made between the look and the watch
        } else {
            m_isBlind = true; // it went away, or the system watches no more and says so each time
            break;
        }
    }
}

void ScanWatch::setNews(const QString& news) {
    if (std::exchange(m_news, news) != news) {
        Q_EMIT newsChanged();
    }
}

} // namespace orv
