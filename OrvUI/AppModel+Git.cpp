#include "OrvCore/Async.h"
#include "OrvUI/AppModel_p.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/NewProject.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

PullStrategy strategyOf(PullPreference preference) {
    switch (preference) {
    case PullPreference::ffOnly:
        return PullStrategy::ffOnly;
    case PullPreference::merge:
        return PullStrategy::merge;
    case PullPreference::rebase:
        return PullStrategy::rebase;
    }
    Q_UNREACHABLE();
}

constexpr std::array quickActions{
    std::pair{"fetch"_L1, QuickGitAction::fetch}, std::pair{"pull"_L1, QuickGitAction::pull},
    std::pair{"push"_L1, QuickGitAction::push}};

} // namespace

void AppModel::setUpGit() {
    d->git = std::make_unique<GitOverview>();
    d->newProject = std::make_unique<NewProject>(*d->git);
    connect(d->git.get(), &GitOverview::badgesChanged, this, &AppModel::gitBadgesChanged);
    connect(d->git.get(), &GitOverview::busyChanged, this, &AppModel::gitBusyChanged);
    connect(d->git.get(), &GitOverview::identityChanged, this, &AppModel::gitIdentitySetChanged);
    connect(d->newProject.get(), &NewProject::added, this, &AppModel::takeInNewProject);
    connect(d->newProject.get(), &NewProject::errorChanged, this, [this] {
        const NewProject& made = *d->newProject;
        if (!made.error().isEmpty() && d->tellsFailure(made.isAside(), &AppSettings::notifyAdded)) {
            notify({tr("%1 was not cloned").arg(made.name()), made.error(), {}, {}});
        }
    });
    connect(d->terminals.get(), &TerminalTabs::commandSettled, this, [this](const QUrl& folder) {
        lookAtGitOf(folder.toLocalFile());
    });
    for (const auto signal : {&AppModel::pageChanged, &AppModel::detailTabChanged}) {
        connect(this, signal, this, &AppModel::lookAtGitOfPage);
    }
}

const QHash<QString, GitBadge>& AppModel::gitBadges() const {
    return d->git->badges();
}
std::optional<GitBadge> AppModel::gitBadge(const Project& project) const {
    return d->git->badge(project.id);
}
bool AppModel::isGitKnown(const Project& project) const {
    return d->git->isKnown(project.id);
}
const QSet<QString>& AppModel::gitBusy() const {
    return d->git->busy();
}
bool AppModel::isGitBusy(const Project& project) const {
    return d->git->busy().contains(project.id);
}
bool AppModel::gitIdentitySet() const {
    return d->git->isIdentitySet();
}
QString AppModel::defaultBranch() const {
    return d->settings->settings().defaultBranch;
}
GitOverview& AppModel::gitOverview() {
    return *d->git;
}
GitModel* AppModel::gitModel() const {
    return d->gitModel.get();
}
NewProject* AppModel::newProject() const {
    return d->newProject.get();
}

QFuture<void> AppModel::refreshGitBadges() {
    return d->git->refresh();
}

void AppModel::lookAtGit() {
    d->git->refreshIfOld();
    if (d->gitModel) {
        d->gitModel->refresh();
    }
}

/// Of the project in whose folder something may have been done, and of the one that is looked at.
void AppModel::lookAtGitOf(const QString& folder) {
    QSet<QString> projects;
    if (const std::optional<QString> around = innermostProject(folder, d->projects)) {
        projects.insert(*around);
    }
    if (d->page.kind == AppPage::Kind::project) {
        projects.insert(d->page.id);
    }
    for (const QString& id : std::as_const(projects)) {
        d->git->refresh(id);
    }
    if (d->gitModel && projects.contains(d->gitModel->projectID())) {
        d->isGitModelOld = true;
        lookAtShownGit();
    }
}

/// An edited file is told of by nobody.
void AppModel::lookAtGitOfPage() {
    if (d->page.kind == AppPage::Kind::project) {
        d->git->refreshIfOld(d->page.id);
        d->isGitModelOld = d->isGitModelOld || d->detailTab == DetailTab::git;
    }
    lookAtShownGit();
}

/// Reading all of a repository takes several processes, which is too much for every line in a terminal: of what is
/// shown beside one, the badge is enough. A commit or another branch is told of by the watch.
void AppModel::lookAtShownGit() {
    const bool isHidden = d->page.kind == AppPage::Kind::project && d->detailTab == DetailTab::terminal;
    if (d->gitModel && !isHidden && std::exchange(d->isGitModelOld, false)) {
        d->gitModel->refresh();
    }
}

QFuture<void> AppModel::refreshGitIdentity() {
    return d->git->refreshIdentity();
}

QFuture<QuickGitReport> AppModel::quickGit(QuickGitAction action, const Project& project) {
    const auto started = [this, text = QuickGit::progress(action, project.name)] {
        setStatusMessage(StatusMessage{.text = text, .isOngoing = true});
    };
    return d->git->quickGit(action, project, strategyOf(d->settings->settings().defaultPullStrategy), started);
}

void AppModel::quickGitFor(const QString& projectID, const QString& action) {
    const auto wanted = std::ranges::find(quickActions, action, [](const auto& row) { return row.first; });
    const Project* known = project(projectID);
    if (wanted == quickActions.end() || known == nullptr) {
        return;
    }
    onFinished(quickGit(wanted->second, *known), this, [this](const QuickGitReport& done) {
        report(done.message, !done.success);
    });
}

void AppModel::openGit(const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    const Project* known = project(projectID);
    if (d->gitModel && known != nullptr && d->gitModel->projectID() == known->id) {
        d->gitModel->refresh();
        return;
    }
    if (!d->gitModel && known == nullptr) {
        return;
    }
    // Whoever shows the old one lets go of it first.
    const std::unique_ptr<GitModel> old = std::move(d->gitModel);
    if (known != nullptr) {
        d->gitModel = std::make_unique<GitModel>(*d->git, *known);
        d->gitModel->pullStrategy = [this] { return strategyOf(d->settings->settings().defaultPullStrategy); };
        d->gitModel->defaultBranch = [this] { return defaultBranch(); };
        connect(this, &AppModel::refreshTokenChanged, d->gitModel.get(), &GitModel::refresh);
        connect(d->gitModel.get(), &GitModel::failed, this, [this](const QString& text) { report(text, true); });
        connect(
            d->gitModel.get(), &GitModel::discarded, this,
            [this, id = known->id](const QString& text, const DiscardedWork& work) {
                d->undo.offer(text, [this, id, work] {
                    const auto back = [work](const GitService& service) { return work.bringBack(service); };
                    const auto outcome = d->git->act(id, back);
                    if (!outcome) {
                        report(QuickGit::busy(QFileInfo(work.repository).fileName()).message, true);
                        return;
                    }
                    onFinished(*outcome, this, [this](const GitOutcome<void>& done) {
                        if (!done) {
                            report(done.error().text(), true);
                        }
                        if (d->gitModel) {
                            d->gitModel->refresh();
                        }
                    });
                });
            });
    }
    Q_EMIT gitModelChanged();
}

void AppModel::takeInNewProject(const QString& name, const QString& path, bool cloned) {
    // A scan that runs already may have passed the folder.
    rescan();
    // As the scan names it, which follows symbolic links.
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const bool isAside = d->newProject->isAside();
    onFinished(refresh(), this, [this, name, path = canonical.isEmpty() ? path : canonical, cloned, isAside] {
        const auto found = std::ranges::find(d->projects, path, &Project::root);
        const bool isProject = found != d->projects.end();
        if (!isAside) {
            setPage(isProject ? AppPage{.kind = AppPage::Kind::project, .id = found->id} : AppPage());
            setSheet({});
        }
        if (!isProject) {
            report(
                tr("%1 is in your projects folder. It is listed as soon as there is something to run in it.").arg(name),
                false);
        } else if (isAside) {
            report(tr("%1 was cloned.").arg(name), false);
        }
        Q_EMIT projectAdded(name, path, cloned);
    });
}

} // namespace orv
