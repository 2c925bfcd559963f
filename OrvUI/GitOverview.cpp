#include "OrvUI/GitOverview.h"

#include "OrvGit/ProjectRepositories.h"
#include "OrvGit/RepositoryLayout.h"
#include "OrvUI/Pool_p.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Commands of users and of open screens at once, over all projects.
constexpr int mostCommands = 4;
constexpr qsizetype projectsAtOnce = 32;
constexpr auto youngTime = std::chrono::seconds(5);
constexpr auto youngTimeOfOne = std::chrono::seconds(1);

} // namespace

/// What is read of one project, and who waits for it.
struct GitProject {
    QString id;
    QString root;
    QStringList repositories = {};
    bool isReading = false;
    QList<std::function<void()>> waiting = {}; ///< for the reading that runs
    QList<std::function<void()>> next = {};    ///< for one more, asked for while another one ran
    bool isKnown = false;
    bool isGone = false;
    QDeadlineTimer young = {}; ///< until what was read last counts as old

    /// True when the reading is to begin now.
    bool begin(std::function<void()> whenRead) {
        young.setRemainingTime(youngTimeOfOne);
        (isReading ? next : waiting).append(std::move(whenRead));
        return !std::exchange(isReading, true);
    }
};

GitOverview::GitOverview(QObject* parent) : QObject(parent) {
    m_service.runner.cancellation.emplace();
    m_pool.setObjectName(u"git"_s);
    m_pool.setMaxThreadCount(mostCommands);
    m_actionPool.setObjectName(u"git action"_s);
    m_actionPool.setMaxThreadCount(mostCommands);
    connect(&m_watch, &RepositoryWatch::changed, this, [this](const QString& repository) {
        for (const auto& project : std::as_const(m_projects)) {
            if (project->repositories.contains(repository)) {
                refresh(project->id);
            }
        }
        Q_EMIT repositoryChanged(repository);
    });
}

GitOverview::~GitOverview() {
    m_service.runner.cancellation->cancel();
    for (const GitCancellation& action : std::as_const(m_actions)) {
        action.cancel();
    }
    m_pool.waitForDone();
    m_actionPool.waitForDone();
}

std::optional<GitBadge> GitOverview::badge(const QString& projectID) const {
    const auto found = m_badges.constFind(projectID);
    return found == m_badges.cend() ? std::nullopt : std::optional(*found);
}

bool GitOverview::isKnown(const QString& projectID) const {
    const auto found = m_projects.constFind(projectID);
    return found != m_projects.cend() && (*found)->isKnown;
}

void GitOverview::setProjects(const QList<Project>& projects, const QString& scanRoot) {
    ORV_ASSERT_MAIN_THREAD();
    m_scanRoot = scanRoot;
    QHash<QString, std::shared_ptr<GitProject>> wanted;
    for (const Project& project : projects) {
        std::shared_ptr<GitProject> known = m_projects.take(project.id);
        if (!known || known->root != project.root) {
            known = std::make_shared<GitProject>(GitProject{.id = project.id, .root = project.root});
        }
        wanted.insert(project.id, known);
    }
    const auto gone = std::exchange(m_projects, std::move(wanted));
    for (const auto& project : gone) {
        project->isGone = true;
        finish(project);
    }
    const auto isGone = [this](QHash<QString, GitBadge>::iterator badge) { return !m_projects.contains(badge.key()); };
    if (m_badges.removeIf(isGone) > 0) {
        Q_EMIT badgesChanged();
    }
    watchSoon();
}

void GitOverview::refreshIfOld() {
    if (m_young.hasExpired()) {
        refresh();
    }
}

QFuture<void> GitOverview::refresh() {
    ORV_ASSERT_MAIN_THREAD();
    m_young.setRemainingTime(youngTime);
    const auto left = std::make_shared<qsizetype>(m_projects.size());
    const Completion read;
    if (*left == 0) {
        read.finish();
    }
    QList<std::shared_ptr<GitProject>> begun;
    for (const auto& project : std::as_const(m_projects)) {
        const bool begins = project->begin([left, read] {
            if (--*left == 0) {
                read.finish();
            }
        });
        if (begins) {
            begun.append(project);
        }
    }
    // A future for each of thousands of projects costs more than to look for their repositories.
    for (qsizetype from = 0; from < begun.size(); from += projectsAtOnce) {
        find(begun.mid(from, projectsAtOnce));
    }
    return whenAll({read.future(), refreshIdentity()}, this);
}

QFuture<void> GitOverview::refresh(const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    const std::shared_ptr<GitProject> project = m_projects.value(projectID);
    if (!project) {
        return finishedFuture();
    }
    const Completion end;
    if (project->begin([end] { end.finish(); })) {
        find({project});
    }
    return end.future();
}

void GitOverview::refreshIfOld(const QString& projectID) {
    const auto project = m_projects.constFind(projectID);
    if (project != m_projects.cend() && (*project)->young.hasExpired()) {
        refresh(projectID);
    }
}

void GitOverview::find(const QList<std::shared_ptr<GitProject>>& projects) {
    QStringList roots;
    for (const auto& project : projects) {
        roots.append(project->root);
    }
    onFinished(m_reader.repositories(roots, m_scanRoot), this, [this, projects](const QList<QStringList>& found) {
        for (qsizetype i = 0; i < projects.size(); ++i) {
            const std::shared_ptr<GitProject>& project = projects[i];
            if (project->isGone) {
                continue;
            }
            if (std::exchange(project->repositories, found[i]) != found[i]) {
                watchSoon();
            }
            read(project);
        }
    });
}

void GitOverview::read(const std::shared_ptr<GitProject>& project) {
    if (project->repositories.isEmpty()) {
        take(project, GitBadge());
        finish(project);
        return;
    }
    onFinished(
        m_reader.readRepositories(project->repositories, project->root), this, [this, project](const GitBadge& badge) {
            if (!project->isGone) {
                take(project, badge);
                finish(project);
            }
        });
}

void GitOverview::take(const std::shared_ptr<GitProject>& project, const GitBadge& badge) {
    const std::optional<GitBadge> now = badge.repoCount > 0 ? std::optional(badge) : std::nullopt;
    const bool wasKnown = std::exchange(project->isKnown, true);
    if (wasKnown && this->badge(project->id) == now) {
        return;
    }
    if (now) {
        m_badges.insert(project->id, *now);
    } else {
        m_badges.remove(project->id);
    }
    Q_EMIT badgesChanged();
}

/// The reading is over; the next one begins where one is wanted.
void GitOverview::finish(const std::shared_ptr<GitProject>& project) {
    QList<std::function<void()>> ended = std::exchange(project->waiting, std::exchange(project->next, {}));
    project->isReading = !project->isGone && !project->waiting.isEmpty();
    if (project->isReading) {
        find({project});
    } else {
        ended += std::exchange(project->waiting, {});
    }
    for (const auto& whenRead : ended) {
        whenRead();
    }
}

void GitOverview::watchSoon() {
    if (!std::exchange(m_isWatchDue, true)) {
        QMetaObject::invokeMethod(this, &GitOverview::watch, Qt::QueuedConnection);
    }
}

void GitOverview::watch() {
    m_isWatchDue = false;
    QSet<QString> repositories;
    for (const auto& project : std::as_const(m_projects)) {
        repositories.unite(QSet<QString>(project->repositories.begin(), project->repositories.end()));
    }
    m_watch.setRepositories(repositories.values());
}

QFuture<void> GitOverview::refreshIdentity() {
    ORV_ASSERT_MAIN_THREAD();
    const Completion completion;
    GitService background = m_service;
    background.runner.purpose = GitPurpose::background;
    const auto look = [background] {
        const auto name = background.effectiveConfigValue(u"user.name"_s);
        const auto email = background.effectiveConfigValue(u"user.email"_s);
        return name && !name->trimmed().isEmpty() && email && !email->trimmed().isEmpty();
    };
    onFinished(runIn(m_pool, look), this, [this, completion](bool isSet) {
        if (std::exchange(m_isIdentitySet, isSet) != isSet) {
            Q_EMIT identityChanged();
        }
        completion.finish();
    });
    return completion.future();
}

GitService GitOverview::begin(const QString& projectID) {
    GitService service = m_service;
    service.runner.cancellation.emplace();
    m_busy.insert(projectID);
    m_actions.insert(projectID, *service.runner.cancellation);
    Q_EMIT busyChanged();
    return service;
}

void GitOverview::end(const QString& projectID) {
    m_busy.remove(projectID);
    m_actions.remove(projectID);
    Q_EMIT busyChanged();
}

void GitOverview::cancelAction(const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    if (const auto action = m_actions.constFind(projectID); action != m_actions.cend()) {
        action->cancel();
    }
}

void GitOverview::keepDraft(const QString& repository, const CommitMessage& message) {
    ORV_ASSERT_MAIN_THREAD();
    if (repository.isEmpty() || message == draft(repository)) {
        return;
    }
    if (message == CommitMessage()) {
        m_drafts.remove(repository);
    } else {
        m_drafts.insert(repository, message);
    }
    Q_EMIT draftChanged(repository);
}

void GitOverview::dropDraft(const QString& repository, const CommitMessage& message) {
    ORV_ASSERT_MAIN_THREAD();
    if (draft(repository) == message) {
        keepDraft(repository, {});
        Q_EMIT draftDropped(repository);
    }
}

std::optional<QFuture<GitOverview::Outcome>> GitOverview::act(
    const QString& projectID, std::function<Outcome(const GitService& service)> work) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_busy.contains(projectID)) {
        return {};
    }
    const auto promise = std::make_shared<QPromise<Outcome>>();
    promise->start();
    const auto run = [work = std::move(work), service = begin(projectID)] { return work(service); };
    onFinished(runIn(m_actionPool, run), this, [this, projectID, promise](const Outcome& outcome) {
        end(projectID);
        refresh(projectID);
        promise->addResult(outcome);
        promise->finish();
    });
    return promise->future();
}

QFuture<QuickGitReport> GitOverview::quickGit(
    QuickGitAction action, const Project& project, PullStrategy strategy, const std::function<void()>& started) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_busy.contains(project.id)) {
        return QtFuture::makeReadyFuture(QuickGit::busy(project.name));
    }
    // The project is busy while its repositories are looked for, so that nobody comes between.
    const GitService actor = begin(project.id);
    const auto promise = std::make_shared<QPromise<QuickGitReport>>();
    promise->start();
    const auto finish = [this, id = project.id, promise](const QuickGitReport& report) {
        end(id);
        promise->addResult(report);
        promise->finish();
    };
    const auto found = [this, action, project, strategy, started, finish, actor](const QStringList& repositories) {
        if (repositories.isEmpty()) {
            finish(QuickGit::noRepository(project.name));
            return;
        }
        started();
        const auto run = [repositories, action, strategy, name = project.name, service = actor]() {
            const QStringList meant =
                action == QuickGitAction::fetch ? repositories : repositoriesOnBranches(repositories);
            for (const QString& repository : meant) {
                const Outcome done = action == QuickGitAction::fetch  ? service.fetch(repository)
                                     : action == QuickGitAction::pull ? service.pull(repository, strategy)
                                                                      : service.push(repository);
                if (!done) {
                    return QuickGitReport{false, done.error().text()};
                }
            }
            return QuickGit::done(action, name, meant.size());
        };
        onFinished(runIn(m_actionPool, run), this, [this, id = project.id, finish](const QuickGitReport& report) {
            refresh(id);
            finish(report);
        });
    };
    const auto look = [runner = actor.runner, root = project.root, scanRoot = m_scanRoot] {
        return ProjectRepositories::of(runner, root, scanRoot).own;
    };
    onFinished(runIn(m_pool, look), this, found);
    return promise->future();
}

} // namespace orv
