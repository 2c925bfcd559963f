#pragma once

#include "OrvCore/Async.h"
#include "OrvCore/Models.h"
#include "OrvGit/GitBadges.h"
#include "OrvGit/GitService.h"
#include "OrvGit/RepositoryWatch.h"
#include "OrvUI/QuickActions.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QThreadPool>

#include <memory>

namespace orv {

struct GitProject;

/// As it is being written.
struct CommitMessage {
    QString summary;
    QString description;
    bool operator==(const CommitMessage&) const = default;
};

/// Git, as all projects share it: their badges, kept true by a watch on their repositories; which of them has an action
/// under way; the pool in which git is run. Lives on the main thread, where nothing of it ever waits for git.
class GitOverview : public QObject {
    Q_OBJECT
public:
    explicit GitOverview(QObject* parent = nullptr);
    /// Ends every git that runs.
    ~GitOverview() override;

    /// Badges of projects that stay are kept until they are read again. In the scanned folder the projects were found.
    void setProjects(const QList<Project>& projects, const QString& scanRoot = {});
    [[nodiscard]] const QString& scanRoot() const { return m_scanRoot; }
    /// By the project's id. Absent where there is no repository, and until it was looked at.
    [[nodiscard]] const QHash<QString, GitBadge>& badges() const { return m_badges; }
    [[nodiscard]] std::optional<GitBadge> badge(const QString& projectID) const;
    /// Whether it has been looked for repositories of the project.
    [[nodiscard]] bool isKnown(const QString& projectID) const;
    /// The ids of the projects with an action under way.
    [[nodiscard]] const QSet<QString>& busy() const { return m_busy; }
    /// Whether a name and an e-mail are configured for commits everywhere; true until that is known.
    [[nodiscard]] bool isIdentitySet() const { return m_isIdentitySet; }

    /// Looks for the repositories of every project and reads them. What is being read already is read once more, after
    /// what runs.
    QFuture<void> refresh();
    /// As `refresh`, unless that was done a moment ago: for whoever looks again, since no watch tells of a file that is
    /// edited.
    void refreshIfOld();
    /// Of one project.
    QFuture<void> refresh(const QString& projectID);
    void refreshIfOld(const QString& projectID);
    QFuture<void> refreshIdentity();

    /// What was written for the next commit of a repository, whoever shows it or not.
    [[nodiscard]] CommitMessage draft(const QString& repository) const { return m_drafts.value(repository); }
    void keepDraft(const QString& repository, const CommitMessage& message);
    /// It was committed. A draft that says something else by now stays.
    void dropDraft(const QString& repository, const CommitMessage& message);

    /// The service for what the user asks for; ends with this object.
    [[nodiscard]] const GitService& service() const { return m_service; }
    [[nodiscard]] QThreadPool& pool() { return m_pool; }

    using Outcome = GitOutcome<void>;
    /// Runs `work` in the pool as the one action of the project, whose badge is read afterwards. Nothing when another
    /// one is under way. It goes on when whoever asked for it is gone.
    [[nodiscard]] std::optional<QFuture<Outcome>> act(
        const QString& projectID, std::function<Outcome(const GitService& service)> work);
    /// Ends the action that is under way in the project, whoever asked for it.
    void cancelAction(const QString& projectID);

    /// Fetches, pulls or pushes every repository of the project, one after the other; the first failure ends it.
    /// `started` is called when there is something to do.
    QFuture<QuickGitReport> quickGit(
        QuickGitAction action, const Project& project, PullStrategy strategy, const std::function<void()>& started);

Q_SIGNALS:
    void badgesChanged();
    void busyChanged();
    void identityChanged();
    /// HEAD, the index, a ref or what is in progress changed, whoever did it.
    void repositoryChanged(const QString& repository);
    void draftChanged(const QString& repository);
    void draftDropped(const QString& repository);

private:
    void find(const QList<std::shared_ptr<GitProject>>& projects);
    void read(const std::shared_ptr<GitProject>& project);
    void take(const std::shared_ptr<GitProject>& project, const GitBadge& badge);
    void finish(const std::shared_ptr<GitProject>& project);
    void watchSoon();
    void watch();
    /// Marks the project as busy. Gives the service for its action.
    [[nodiscard]] GitService begin(const QString& projectID);
    void end(const QString& projectID);

    GitService m_service;
    QString m_scanRoot;
    QHash<QString, std::shared_ptr<GitProject>> m_projects; ///< by id
    QHash<QString, GitBadge> m_badges;
    QSet<QString> m_busy;
    QHash<QString, GitCancellation> m_actions; ///< by the project's id
    QHash<QString, CommitMessage> m_drafts;    ///< by the repository's folder
    bool m_isIdentitySet = true;
    bool m_isWatchDue = false;
    QDeadlineTimer m_young; ///< until what was read last counts as old
    RepositoryWatch m_watch;
    // Last, so that what runs in them ends before what it uses goes.
    GitBadges m_reader;
    QThreadPool m_pool;
    QThreadPool m_actionPool; ///< so that nobody who looks waits for a server
};

} // namespace orv
