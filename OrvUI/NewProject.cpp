#include "OrvUI/NewProject.h"

#include "OrvUI/Pool_p.h"

#include <QDir>
#include <QFileInfo>
#include <QFutureWatcher>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Steps of the progress of a future, which is a whole number.
constexpr int progressSteps = 1000;

GitOutcome<void> makeFolder(const GitService& service, const QString& path, const QString& branch) {
    const auto refuse = [](const QString& text) { return std::unexpected(GitError::refused(text)); };
    // Made here and now: a folder that someone else has made since is not ours to fill.
    if (!QDir().mkdir(path)) {
        return refuse(
            QFileInfo::exists(path) ? NewProject::tr("There is already a folder with this name.")
                                    : NewProject::tr("The folder can't be made: %1").arg(qt_error_string(errno)));
    }
    if (branch.isEmpty()) {
        return {};
    }
    const auto made = service.initRepository(path, branch);
    if (!made) {
        QDir(path).removeRecursively();
    }
    return made;
}

} // namespace

NewProject::NewProject(GitOverview& overview, QObject* parent) : QObject(parent), m_overview(overview) {}

NewProject::~NewProject() {
    if (m_cancellation) {
        m_cancellation->cancel();
    }
}

QString NewProject::nameProblem(const QString& name, const QString& parentFolder) {
    if (name.trimmed().isEmpty()) {
        return tr("Enter a name first.");
    }
    if (!isFolderName(name)) {
        return tr("This is not a name for a folder.");
    }
    if (!QFileInfo(parentFolder).isDir()) {
        return tr("There is no folder %1.").arg(parentFolder);
    }
    const QFileInfo target(parentFolder + u'/' + name);
    return target.exists() || target.isSymLink() ? NewProject::tr("There is already a folder with this name.")
                                                 : QString();
}

QString NewProject::nameOf(const QString& url) {
    return folderNameOfUrl(url);
}

void NewProject::createFolder(const QString& name, const QString& parentFolder, const QString& branch) {
    if (!branch.isEmpty() && !isBranchName(branch)) {
        setError(tr("“%1” is not a name for a branch.").arg(branch));
        return;
    }
    const QString path = parentFolder + u'/' + name;
    start(Kind::folder, name, parentFolder, [path, branch](const GitService& service, QPromise<Outcome>&) {
        return makeFolder(service, path, branch);
    });
}

void NewProject::clone(const QString& url, const QString& name, const QString& parentFolder) {
    if (url.trimmed().isEmpty()) {
        setError(tr("Enter the address of a repository first."));
        return;
    }
    const auto work = [url, name, parentFolder](const GitService& service, QPromise<Outcome>& progress) {
        return service.clone(url, parentFolder, name, [&progress](const QString& line) {
            if (const auto step = parseCloneProgress(line)) {
                progress.setProgressValueAndText(static_cast<int>(step->fraction() * progressSteps), line.trimmed());
            }
        });
    };
    start(Kind::clone, name, parentFolder, work);
}

void NewProject::start(Kind kind, const QString& name, const QString& parentFolder, const Work& work) {
    ORV_ASSERT_MAIN_THREAD();
    if (isBusy()) {
        return;
    }
    setError(nameProblem(name, parentFolder));
    if (!m_error.isEmpty()) {
        return;
    }
    m_name = name;
    setAside(false);
    GitService service = m_overview.service();
    m_cancellation.emplace();
    service.runner.cancellation = m_cancellation;
    const auto promise = std::make_shared<QPromise<Outcome>>();
    promise->start();
    promise->setProgressRange(0, progressSteps);
    m_overview.pool().start([promise, service, work] {
        promise->addResult(work(service, *promise));
        promise->finish();
    });
    auto* watcher = new QFutureWatcher<Outcome>(this);
    connect(watcher, &QFutureWatcherBase::progressTextChanged, this, [this, watcher](const QString& line) {
        setProgress(static_cast<double>(watcher->progressValue()) / progressSteps, line);
    });
    connect(watcher, &QFutureWatcherBase::finished, watcher, &QObject::deleteLater);
    watcher->setFuture(promise->future());
    onFinished(promise->future(), this, [this, kind, path = parentFolder + u'/' + name](const Outcome& outcome) {
        end(kind, outcome, path);
    });
    setProgress(-1, {});
}

void NewProject::end(Kind kind, const Outcome& outcome, const QString& path) {
    m_cancellation.reset();
    setProgress(-1, {});
    if (outcome) {
        Q_EMIT added(QFileInfo(path).fileName(), path, kind == Kind::clone);
    } else if (outcome.error().kind == GitError::Kind::cancelled) {
        Q_EMIT cancelled();
    } else {
        // It stays aside until somebody has read that.
        setError(outcome.error().text());
        return;
    }
    setAside(false);
}

void NewProject::cancel() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_cancellation) {
        m_cancellation->cancel();
    }
}

void NewProject::setAside(bool isAside) {
    if (std::exchange(m_isAside, isAside) != isAside) {
        Q_EMIT asideChanged();
    }
}

void NewProject::clearError() {
    setError({});
    if (!isBusy()) {
        setAside(false);
    }
}

void NewProject::setProgress(double fraction, const QString& line) {
    m_fraction = fraction;
    m_progressLine = line;
    Q_EMIT progressChanged();
}

void NewProject::setError(const QString& error) {
    if (std::exchange(m_error, error) != error) {
        Q_EMIT errorChanged();
    }
}

} // namespace orv
