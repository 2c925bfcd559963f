#pragma once

#include "OrvGit/DiscardedWork.h"
#include "OrvGit/RepositoryLayout.h"
#include "OrvUI/DiffModel.h"
#include "OrvUI/GitFileList.h"
#include "OrvUI/GitOverview.h"
#include "OrvUI/GitRows.h"

#include <QTimer>
#include <QUrl>
#include <QVariantMap>

#include <chrono>

Q_MOC_INCLUDE("OrvUI/CommitForm.h")

namespace orv {

class CommitForm;
class Completion;

/// Behind the git page of one project: its repositories, and of one of them what there is and what can be done.
///
/// Lives on the main thread. git runs in the overview's pool: what is read ends with this object, and what the user
/// asked for goes on. What was read for another repository, another file or an older state is dropped.
class GitModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString projectID READ projectID CONSTANT)
    Q_PROPERTY(QAbstractListModel* repositories READ repositories CONSTANT)
    Q_PROPERTY(QAbstractListModel* staged READ staged CONSTANT)
    Q_PROPERTY(QAbstractListModel* unstaged READ unstaged CONSTANT)
    Q_PROPERTY(QAbstractListModel* conflicted READ conflicted CONSTANT)
    Q_PROPERTY(QAbstractListModel* branches READ branches CONSTANT)
    Q_PROPERTY(QAbstractListModel* history READ history CONSTANT)
    Q_PROPERTY(QAbstractListModel* stashes READ stashes CONSTANT)
    Q_PROPERTY(QAbstractListModel* commitFiles READ commitFiles CONSTANT)
    Q_PROPERTY(orv::DiffModel* diff READ diff CONSTANT)
    Q_PROPERTY(orv::GitFileList* files READ files CONSTANT)
    Q_PROPERTY(orv::CommitForm* commitForm READ commitForm CONSTANT)
    Q_PROPERTY(int currentRow READ currentRow NOTIFY currentRowChanged)
    Q_PROPERTY(QString repository READ repository WRITE setRepository NOTIFY repositoryChanged)
    Q_PROPERTY(QString state READ state NOTIFY statusChanged)
    Q_PROPERTY(QString problem READ problem NOTIFY statusChanged)
    Q_PROPERTY(QString note READ note NOTIFY statusChanged)
    Q_PROPERTY(QString branch READ branch NOTIFY statusChanged)
    Q_PROPERTY(QString upstream READ upstream NOTIFY statusChanged)
    Q_PROPERTY(int ahead READ ahead NOTIFY statusChanged)
    Q_PROPERTY(int behind READ behind NOTIFY statusChanged)
    Q_PROPERTY(bool detached READ isDetached NOTIFY statusChanged)
    Q_PROPERTY(bool hasCommits READ hasCommits NOTIFY statusChanged)
    Q_PROPERTY(int stagedCount READ stagedCount NOTIFY statusChanged)
    Q_PROPERTY(int unstagedCount READ unstagedCount NOTIFY statusChanged)
    Q_PROPERTY(int conflictCount READ conflictCount NOTIFY statusChanged)
    Q_PROPERTY(int changeCount READ changeCount NOTIFY statusChanged)
    Q_PROPERTY(int ownChangeCount READ ownChangeCount NOTIFY statusChanged)
    Q_PROPERTY(QVariantList firstChanges READ firstChanges NOTIFY statusChanged)
    Q_PROPERTY(QString operation READ operation NOTIFY statusChanged)
    Q_PROPERTY(QString operationText READ operationText NOTIFY statusChanged)
    Q_PROPERTY(bool canContinue READ canContinue NOTIFY statusChanged)
    Q_PROPERTY(bool canSkip READ canSkip NOTIFY statusChanged)
    Q_PROPERTY(bool canAbort READ canAbort NOTIFY statusChanged)
    Q_PROPERTY(QString selectedPath READ selectedPath NOTIFY selectionChanged)
    Q_PROPERTY(bool selectedIsStaged READ selectedIsStaged NOTIFY selectionChanged)
    Q_PROPERTY(QString selectedCommit READ selectedCommit NOTIFY selectionChanged)
    Q_PROPERTY(QString selectedName READ selectedName NOTIFY selectionChanged)
    Q_PROPERTY(QString selectedFolder READ selectedFolder NOTIFY selectionChanged)
    Q_PROPERTY(QVariantMap shownCommit READ shownCommit NOTIFY selectionChanged)
    Q_PROPERTY(bool isLoadingDiff READ isLoadingDiff NOTIFY fileChanged)
    Q_PROPERTY(QString diffNote READ diffNote NOTIFY fileChanged)
    Q_PROPERTY(bool canDivide READ canDivide NOTIFY fileChanged)
    Q_PROPERTY(bool hasMoreHistory READ hasMoreHistory NOTIFY historyChanged)
    Q_PROPERTY(QString headSummary READ headSummary NOTIFY detailsChanged)
    Q_PROPERTY(QString headDescription READ headDescription NOTIFY detailsChanged)
    Q_PROPERTY(QString identityName READ identityName NOTIFY detailsChanged)
    Q_PROPERTY(QString identityEmail READ identityEmail NOTIFY detailsChanged)
    Q_PROPERTY(QVariantMap identities READ identities NOTIFY identitiesChanged)
    Q_PROPERTY(bool lookedAt READ isLookedAt WRITE setLookedAt NOTIFY lookedAtChanged)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY busyChanged)
    Q_PROPERTY(QString busyText READ busyText NOTIFY busyChanged)
    Q_PROPERTY(QString busyWith READ busyWith NOTIFY busyChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    GitModel(GitOverview& overview, const Project& project, QObject* parent = nullptr);
    ~GitModel() override;

    std::function<PullStrategy()> pullStrategy; ///< absent: fast-forwards only
    std::function<QString()> defaultBranch;     ///< on which a new repository begins; absent: "main"

    /// Reads everything again. While that goes on, this is the end of the next time.
    QFuture<void> refresh();
    Q_INVOKABLE void refreshNow() { refresh(); }

    /// While somebody looks at the page, a status is taken again and again, and everything is read anew when files were
    /// edited. There is no timer otherwise.
    [[nodiscard]] bool isLookedAt() const { return m_isLookedAt; }
    void setLookedAt(bool isLookedAt);
    std::chrono::milliseconds lookInterval =
        std::chrono::seconds(2); ///< between two looks; longer where they take long

    [[nodiscard]] const QString& projectID() const { return m_project.id; }
    [[nodiscard]] RowModel<RepositoryRow>* repositories() { return &m_repositories; }
    [[nodiscard]] RowModel<ChangeRow>* staged() { return &m_staged; }
    [[nodiscard]] RowModel<ChangeRow>* unstaged() { return &m_unstaged; }
    [[nodiscard]] RowModel<ChangeRow>* conflicted() { return &m_conflicted; }
    [[nodiscard]] RowModel<BranchRow>* branches() { return &m_branches; }
    [[nodiscard]] RowModel<CommitRow>* history() { return &m_history; }
    [[nodiscard]] RowModel<StashRow>* stashes() { return &m_stashes; }
    [[nodiscard]] RowModel<ChangeRow>* commitFiles() { return &m_commitFiles; }
    [[nodiscard]] DiffModel* diff() { return &m_diff; }
    [[nodiscard]] GitFileList* files() { return &m_files; } ///< what is changed, and the stashes, as one list
    [[nodiscard]] CommitForm* commitForm() const { return m_commitForm.get(); }

    /// The folder of the one that is shown; empty while there is none.
    [[nodiscard]] const QString& repository() const { return m_repository; }
    void setRepository(const QString& folder);

    // What there is
    /// "loading", "none" (no repository in the project), "bare" (history and branches only), "ready", "failed".
    [[nodiscard]] QString state() const;
    [[nodiscard]] const QString& problem() const { return m_problem; } ///< of a failed one
    /// That it is a submodule, a work tree of another repository, or one that the project is a part of; empty for an
    /// ordinary one. Where there is none: that one that is started would be nested in another one.
    [[nodiscard]] const QString& note() const { return m_note; }
    [[nodiscard]] QString branch() const { return m_status.branch.value_or(QString()); }
    [[nodiscard]] QString upstream() const { return m_status.upstream.value_or(QString()); }
    [[nodiscard]] int ahead() const { return m_status.ahead; }
    [[nodiscard]] int behind() const { return m_status.behind; }
    [[nodiscard]] bool isDetached() const { return m_status.isDetached; }
    [[nodiscard]] bool hasCommits() const { return m_status.hasCommits; }
    [[nodiscard]] int stagedCount() const { return static_cast<int>(m_stagedCount); }
    [[nodiscard]] int unstagedCount() const { return static_cast<int>(m_unstagedCount); }
    [[nodiscard]] int conflictCount() const { return m_conflicted.rowCount(); }
    [[nodiscard]] int changeCount() const { return m_changeCount; }       ///< files, each once
    [[nodiscard]] int ownChangeCount() const { return m_ownChangeCount; } ///< those of the project's folder
    /// The first few changed files of the project's folder, each once, for a card: maps of "letter", "folder", "name".
    [[nodiscard]] QVariantList firstChanges() const;
    /// "", "merge", "rebase", "am", "cherry-pick", "revert", "bisect".
    [[nodiscard]] QString operation() const;
    [[nodiscard]] QString operationText() const; ///< "Rebasing topic, step 2 of 5: 1 file in conflict"
    [[nodiscard]] bool canContinue() const;
    [[nodiscard]] bool canSkip() const { return m_operation.canSkip(); }
    [[nodiscard]] bool canAbort() const { return m_operation.operation != GitOperation::none; }
    [[nodiscard]] QString headSummary() const;     ///< the last commit's, for an amendment
    [[nodiscard]] QString headDescription() const; ///< the rest of its message
    /// What a commit here would carry.
    [[nodiscard]] QString identityName() const { return m_details.identity.name.value_or(QString()); }
    [[nodiscard]] QString identityEmail() const { return m_details.identity.email.value_or(QString()); }

    // The file or commit whose diff is shown
    Q_INVOKABLE void selectFile(const QString& path, bool isStaged);
    /// The files that a commit changed are listed, and the first one is shown. An empty hash goes back.
    Q_INVOKABLE void selectCommit(const QString& commit);
    Q_INVOKABLE void selectCommitFile(const QString& path);
    [[nodiscard]] const QString& selectedPath() const { return m_selectedPath; }
    [[nodiscard]] bool selectedIsStaged() const { return m_isStagedSelected; }
    [[nodiscard]] const QString& selectedCommit() const { return m_selectedCommit; }
    [[nodiscard]] QString selectedName() const;   ///< the last part of the path, fit to be shown
    [[nodiscard]] QString selectedFolder() const; ///< what comes before, with the slash at its end
    /// Where a file of the repository lies.
    [[nodiscard]] Q_INVOKABLE QString fileOf(const QString& path) const;
    /// "subject", "author", "when", "shortID" of the commit that is selected; empty when none is.
    [[nodiscard]] QVariantMap shownCommit() const;
    [[nodiscard]] bool isLoadingDiff() const { return m_isLoadingDiff; }
    /// What is to be said of the file beside, or instead of, its lines ("This is a binary file.").
    [[nodiscard]] const QString& diffNote() const { return m_diffNote; }
    /// Whether a part of it can be staged, unstaged or discarded.
    [[nodiscard]] bool canDivide() const;

    [[nodiscard]] bool hasMoreHistory() const { return m_hasMoreHistory; }
    Q_INVOKABLE void loadMoreHistory();

    // By the rows of `files`
    [[nodiscard]] int currentRow() const { return m_currentRow; } ///< of the file that is selected; -1 when none is
    Q_INVOKABLE void selectRow(int row);
    /// Stages or unstages the file; of one in conflict that is the word that it is resolved. The selection goes on to
    /// the next file of the section.
    Q_INVOKABLE void toggleRow(int row);

    // Actions: one at a time in a project. How one ended is told by `succeeded` or `failed`.
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] const QString& busyText() const { return m_busyText; } ///< of an action that began here
    [[nodiscard]] const QString& busyWith() const { return m_busyWith; } ///< its name
    /// Why the last action failed, until the next one begins or somebody has read it.
    [[nodiscard]] const QString& error() const { return m_error; }
    Q_INVOKABLE void clearError() { setError({}); }
    Q_INVOKABLE void cancelAction();

    Q_INVOKABLE void stage(const QStringList& paths);
    Q_INVOKABLE void stageAll();
    Q_INVOKABLE void unstage(const QStringList& paths);
    Q_INVOKABLE void unstageAll();
    /// Back to HEAD, staged or not; an untracked file is deleted.
    Q_INVOKABLE void discard(const QStringList& paths);
    /// Without a way back.
    Q_INVOKABLE void discardForGood(const QStringList& paths);
    /// Parts of the file that is selected, as it is shown.
    Q_INVOKABLE void stageHunk(int hunk);
    Q_INVOKABLE void unstageHunk(int hunk);
    Q_INVOKABLE void discardHunk(int hunk);
    /// The lines that are chosen in `diff`.
    Q_INVOKABLE void stageLines();
    Q_INVOKABLE void unstageLines();
    Q_INVOKABLE void discardLines();

    /// Makes the project's folder a repository.
    Q_INVOKABLE void initRepository();
    Q_INVOKABLE void commit(const QString& summary, const QString& description);
    Q_INVOKABLE void amend(const QString& summary, const QString& description);
    Q_INVOKABLE void continueOperation();
    Q_INVOKABLE void skipOperation();
    Q_INVOKABLE void abortOperation();

    Q_INVOKABLE void switchBranch(const QString& name);
    Q_INVOKABLE void switchToRemote(const QString& remoteBranch);
    Q_INVOKABLE void createBranch(const QString& name);
    Q_INVOKABLE void deleteBranch(const QString& name, bool evenIfUnmerged);
    Q_INVOKABLE void setUpstream(const QString& branchName, const QString& upstreamName);

    Q_INVOKABLE void stashSave(const QString& message, bool withUntracked);
    Q_INVOKABLE void stashPop(const QString& stash);
    Q_INVOKABLE void stashApply(const QString& stash);
    Q_INVOKABLE void stashDrop(const QString& stash);

    Q_INVOKABLE void fetch();
    Q_INVOKABLE void pull();
    Q_INVOKABLE void push();

    /// Reads what `identities` has.
    Q_INVOKABLE void readIdentities();
    /// What is set for all repositories, and for this one alone: "globalName", "globalEmail", "ownName", "ownEmail".
    /// Empty until it was asked for.
    [[nodiscard]] const QVariantMap& identities() const { return m_identities; }
    /// As GitIdentityForm has it.
    [[nodiscard]] Q_INVOKABLE static bool isLikelyEmail(const QString& text);
    Q_INVOKABLE void setIdentity(const QString& name, const QString& email, bool everywhere);

Q_SIGNALS:
    /// What was discarded can be brought back. `text` says what that was.
    void discarded(const QString& text, const orv::DiscardedWork& work);
    /// Nothing was discarded, for it could not be brought back.
    void notKept(const QString& why, const QStringList& paths);
    void repositoryChanged();
    void statusChanged();
    void selectionChanged();
    void fileChanged();
    void historyChanged();
    void lookedAtChanged();
    void detailsChanged();
    void identitiesChanged();
    void busyChanged();
    void currentRowChanged();
    void errorChanged();
    /// The name of the action: "commit", "stage", ...
    void succeeded(const QString& action);
    void failed(const QString& text);

private:
    enum class State { loading, none, bare, ready, failed };
    /// What one round of reading finds.
    struct Found;
    /// What is read after the status, since it is looked at less.
    struct Details {
        GitIdentity identity;
        QString headMessage;
        bool operator==(const Details&) const = default;
    };

    /// Runs `work` in the pool, and drops its result when `generation` has moved on by then.
    template <typename Reading, typename Handler>
    void readFor(const int& generation, Reading work, Handler handler);
    [[nodiscard]] static Found find(
        const GitService& service, const Project& project, const QString& scanRoot, const QString& wanted,
        int historyLength);
    /// Of everything that a status tells, and of the changed files as they are: when it is the same, nothing was
    /// edited.
    [[nodiscard]] static QByteArray markOf(const QString& repository, const RepoStatus& status);
    void look();
    void lookLater();
    void restAfterReading(std::chrono::milliseconds time);
    void load();
    void takeIn(const Found& found);
    void takeInState(const Found& found);
    void followSelection();
    [[nodiscard]] const ChangeRow* selectedRow(bool isStaged) const;
    [[nodiscard]] static DiffRequest requestOf(const ChangeRow& row, bool isStaged);
    void loadDiff(const ChangeRow& row);
    void showDiff(const FileDiff& diff, const QString& note);
    void clearFile();

    using Work = std::function<GitOutcome<void>(const GitService& service, const QString& repository)>;
    void act(const QString& name, const QString& text, const Work& work);
    enum class Part { stage, unstage, discard };
    void actOnLines(Part part, const DiffSelection& selection);
    template <typename Method>
    void actOnStash(const QString& name, const QString& text, const QString& stash, Method method);
    void run(
        const QString& name, const QString& text, const std::function<GitOutcome<void>(const GitService&)>& work,
        const std::function<void()>& then = {}, const std::function<bool()>& otherwise = {});
    /// Runs `work`, which discards something of the paths, once that can be brought back; says `notKept` when it can't.
    void actAndKeep(const QString& text, const QStringList& paths, const Work& work);
    void refuse(const QString& text);
    void setError(const QString& text);
    void updateCurrentRow();

    GitOverview& m_overview;
    const Project m_project;
    GitService m_reader;
    QString m_wanted; ///< the repository that was asked for
    QString m_repository;
    State m_state = State::loading;
    QString m_problem;
    QString m_note;
    RepoStatus m_status; ///< without its changes, which are in the lists
    qsizetype m_stagedCount = 0;
    qsizetype m_unstagedCount = 0;
    int m_changeCount = 0;
    QString m_ownFolder; ///< of the project in a repository that it lies in, with the slash at its end; else empty
    int m_ownChangeCount = 0;
    OperationState m_operation;
    Details m_details;

    RowModel<RepositoryRow> m_repositories;
    RowModel<ChangeRow> m_staged;
    RowModel<ChangeRow> m_unstaged;
    RowModel<ChangeRow> m_conflicted;
    RowModel<BranchRow> m_branches;
    RowModel<CommitRow> m_history;
    RowModel<StashRow> m_stashes;
    RowModel<ChangeRow> m_commitFiles;
    GitFileList m_files;
    DiffModel m_diff;
    std::unique_ptr<CommitForm> m_commitForm;

    std::unique_ptr<Completion> m_loading; ///< the reading that runs
    std::unique_ptr<Completion> m_next;    ///< asked for while another one ran
    QTimer m_nextLook;
    bool m_isLookedAt = false;
    bool m_isLooking = false;
    QByteArray m_mark;                   ///< of what was read
    std::chrono::milliseconds m_rest{0}; ///< until the next look, by what the last one or a reading took
    int m_generation = 0;                ///< of the repository that is shown
    int m_fileGeneration = 0;            ///< of the file or commit that is shown
    bool m_hasMoreHistory = false;
    bool m_isLoadingHistory = false;

    QString m_selectedPath;
    bool m_isStagedSelected = false;
    QString m_selectedCommit;
    QList<FileDiff> m_commitDiffs;
    DiffRequest m_shownRequest; ///< of what is in `diff`
    bool m_isLoadingDiff = false;
    bool m_isDiffOld = false;            ///< it shows what was before the last action
    std::function<void()> m_wishedLines; ///< asked for meanwhile
    QString m_diffNote;
    int m_currentRow = -1;
    QString m_busyText;
    QString m_busyWith;
    QString m_error;
    QVariantMap m_identities;
};

} // namespace orv
