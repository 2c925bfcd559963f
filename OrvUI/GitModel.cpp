#include "OrvUI/GitModel.h"

#include "OrvGit/ProjectRepositories.h"
#include "OrvUI/CommitForm.h"
#include "OrvUI/Pool_p.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Commits that are read at once.
constexpr int historyPage = 100;

struct OperationWords {
    QLatin1StringView name;
    const char* going;
};
constexpr std::array operationWords{
    OperationWords{""_L1, ""},
    OperationWords{"merge"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Merging")},
    OperationWords{"rebase"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Rebasing")},
    OperationWords{"am"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Applying patches")},
    OperationWords{"cherry-pick"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Cherry-picking")},
    OperationWords{"revert"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Reverting")},
    OperationWords{"bisect"_L1, QT_TRANSLATE_NOOP("orv::GitModel", "Bisecting")}};

const OperationWords& wordsOf(GitOperation operation) {
    return operationWords[static_cast<size_t>(operation)];
}

bool isFurtherWorkTree(const RepositoryLayout& layout) {
    return layout.kind == RepositoryLayout::Kind::linked && layout.commonDirectory != layout.gitDirectory;
}

/// What is to be known of a repository that is more, or less, than the project.
QString noteOf(const RepositoryLayout& layout, const Project& project) {
    if (!wayBelow(layout.folder, project.root).isEmpty()) {
        return GitModel::tr("%1 is a part of the repository %2, all of which is shown here.")
            .arg(project.name, shownPath(layout.folder));
    }
    if (layout.isSubmodule()) {
        return GitModel::tr("A submodule of another repository.");
    }
    return isFurtherWorkTree(layout) ? GitModel::tr("A work tree of %1.").arg(shownPath(layout.mainFolder()))
                                     : QString();
}

/// Of a folder that is no repository, but lies in one that is none of the project's.
QString nestedNote(const QString& enclosing) {
    return enclosing.isEmpty()
               ? QString()
               : GitModel::tr("It lies in the repository %1, which is not listed with it. One that is started here "
                              "is nested in that one, and has a history of its own.")
                     .arg(shownPath(enclosing));
}

/// What the repository is called in the list of a project's.
QString labelOf(const QString& name, const RepositoryLayout& layout) {
    if (layout.isSubmodule()) {
        return GitModel::tr("%1 (submodule)").arg(name);
    }
    return isFurtherWorkTree(layout)
               ? GitModel::tr("%1 (work tree of %2)").arg(name, shownPath(QFileInfo(layout.mainFolder()).fileName()))
               : name;
}

RepositoryRow rowOf(const Project& project, const QString& repository) {
    const QString below = wayBelow(project.root, repository);
    const QString name = repository == project.root ? project.name
                         : !below.isEmpty()         ? shownPath(below)
                                                    : shownPath(QFileInfo(repository).fileName());
    RepositoryRow row;
    row.key = repository;
    row.name = name;
    row.label = labelOf(name, RepositoryLayout::of(repository).value_or(RepositoryLayout()));
    return row;
}

void setStatus(RepositoryRow& row, const RepoStatus& status, int changes) {
    row.branch = status.branch.value_or(QString());
    row.changes = changes;
    row.ahead = status.ahead;
    row.behind = status.behind;
}

} // namespace

struct GitModel::Found {
    State state = State::none;
    QString problem;
    QString note;
    QString repository;
    QList<RepositoryRow> repositories;
    RepoStatus status;
    QByteArray mark;
    int changes = 0;
    QString ownFolder;
    int ownChanges = 0;
    ChangeLists lists;
    OperationState operation;
    Details details;
    QList<BranchRow> branches;
    QList<StashRow> stashes;
    QList<CommitRow> history;
    bool hasMoreHistory = false;
};

GitModel::GitModel(GitOverview& overview, const Project& project, QObject* parent)
    : QObject(parent),
      m_overview(overview),
      m_project(project),
      m_reader(overview.service()),
      m_commitForm(std::make_unique<CommitForm>(*this, overview)) {
    ORV_ASSERT_MAIN_THREAD();
    connect(this, &GitModel::selectionChanged, this, &GitModel::updateCurrentRow);
    m_nextLook.setSingleShot(true);
    connect(&m_nextLook, &QTimer::timeout, this, &GitModel::look);
    m_reader.runner.purpose = GitPurpose::background;
    m_reader.runner.cancellation.emplace();
    connect(&overview, &GitOverview::busyChanged, this, &GitModel::busyChanged);
    connect(&overview, &GitOverview::repositoryChanged, this, [this](const QString& repository) {
        const auto& rows = m_repositories.rows();
        if (std::ranges::find(rows, repository, &RepositoryRow::key) != rows.end()) {
            refresh();
        }
    });
    // So that its repositories are watched.
    overview.refresh(project.id);
    refresh();
}

GitModel::~GitModel() {
    m_reader.runner.cancellation->cancel();
}

QString GitModel::state() const {
    constexpr std::array names{"loading"_L1, "none"_L1, "bare"_L1, "ready"_L1, "failed"_L1};
    return names[static_cast<size_t>(m_state)];
}

QString GitModel::operation() const {
    return wordsOf(m_operation.operation).name;
}

QString GitModel::operationText() const {
    if (m_operation.operation == GitOperation::none) {
        return {};
    }
    QString text = tr(wordsOf(m_operation.operation).going);
    if (!m_operation.branch.isEmpty()) {
        text += u' ' + m_operation.branch;
    }
    if (m_operation.steps > 0) {
        text += tr(", step %1 of %2").arg(m_operation.step).arg(m_operation.steps);
    }
    if (const qsizetype count = m_operation.conflicts.size(); count > 0) {
        text += count == 1 ? tr(": 1 file in conflict") : tr(": %1 files in conflict").arg(count);
    }
    return text;
}

bool GitModel::canContinue() const {
    return m_operation.operation != GitOperation::none && m_operation.operation != GitOperation::bisect &&
           m_operation.conflicts.isEmpty();
}

QString GitModel::headSummary() const {
    return m_details.headMessage.section(u'\n', 0, 0);
}

QString GitModel::headDescription() const {
    return m_details.headMessage.section(u'\n', 1).trimmed();
}

QFuture<void> GitModel::refresh() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_loading) {
        if (!m_next) {
            m_next = std::make_unique<Completion>();
        }
        return m_next->future();
    }
    m_loading = std::make_unique<Completion>();
    m_nextLook.stop();
    const QFuture<void> end = m_loading->future();
    load();
    return end;
}

void GitModel::setRepository(const QString& folder) {
    ORV_ASSERT_MAIN_THREAD();
    if (folder == m_wanted || folder.isEmpty()) {
        return;
    }
    m_wanted = folder;
    ++m_generation;
    // Nobody waits for what is read of the old one.
    m_reader.runner.cancellation->cancel();
    m_reader.runner.cancellation.emplace();
    refresh();
}

void GitModel::load() {
    const int length = std::max(historyPage, m_history.rowCount());
    const auto work = [reader = m_reader, project = m_project, scanRoot = m_overview.scanRoot(), wanted = m_wanted,
                       length] { return find(reader, project, scanRoot, wanted, length); };
    QElapsedTimer clock;
    clock.start();
    onFinished(runIn(m_overview.pool(), work), this, [this, clock, at = m_generation](const Found& found) {
        if (at == m_generation) {
            takeIn(found);
        }
        const std::unique_ptr<Completion> ended = std::exchange(m_loading, std::exchange(m_next, nullptr));
        if (m_loading) {
            load();
        }
        restAfterReading(std::chrono::milliseconds(clock.elapsed()));
        ended->finish();
    });
}

GitModel::Found GitModel::find(
    const GitService& service, const Project& project, const QString& scanRoot, const QString& wanted,
    int historyLength) {
    Found found;
    const auto around = ProjectRepositories::of(service.runner, project.root, scanRoot);
    QStringList repositories = around.own;
    if (repositories.isEmpty() && RepositoryLayout::of(project.root)) {
        repositories.append(project.root);
    }
    if (repositories.isEmpty()) {
        found.state = State::none;
        found.note = nestedNote(around.enclosing);
        return found;
    }
    found.repository = repositories.contains(wanted) ? wanted : repositories.first();
    if (const QString below = wayBelow(found.repository, project.root); !below.isEmpty()) {
        found.ownFolder = below + u'/';
    }
    const auto layout = RepositoryLayout::of(found.repository);
    if (layout) {
        found.note = noteOf(*layout, project);
        if (const auto history = service.history(found.repository, {.limit = historyLength, .from = {}, .path = {}})) {
            found.history = commitRows(*history, QDateTime::currentDateTime());
            found.hasMoreHistory = history->size() == historyLength;
        }
        found.branches = branchRows(service.branchInfos(found.repository).value_or(QList<BranchInfo>()));
        found.details.headMessage = service.headMessage(found.repository).value_or(QString());
        found.details.identity = service.effectiveIdentity(found.repository).value_or(GitIdentity());
    }
    if (layout && layout->kind == RepositoryLayout::Kind::bare) {
        // It has no status; its branches still say something.
        found.state = State::bare;
        const auto current = std::ranges::find(found.branches, true, &BranchRow::isCurrent);
        found.status.branch = current != found.branches.end() ? std::optional(current->name) : std::optional<QString>();
        found.status.hasCommits = !found.history.isEmpty();
    } else if (auto status = service.status(found.repository)) {
        found.state = State::ready;
        // Before a diff is read: what is edited meanwhile makes another mark.
        found.mark = markOf(found.repository, *status);
        found.lists = ChangeLists::of(status->changes);
        found.ownChanges = static_cast<int>(std::ranges::count_if(
            status->changes, [&](const FileChange& each) { return each.path.startsWith(found.ownFolder); }));
        found.changes = static_cast<int>(std::exchange(status->changes, {}).size());
        found.status = *std::move(status);
        found.operation = service.operation(found.repository).value_or(OperationState());
        found.stashes = stashRows(service.stashes(found.repository).value_or(QList<StashEntry>()));
    } else {
        found.state = State::failed;
        found.problem = status.error().text();
    }
    for (const QString& each : std::as_const(repositories)) {
        RepositoryRow row = rowOf(project, each);
        row.isCurrent = each == found.repository;
        int changes = 0;
        if (row.isCurrent) {
            row.problem = found.problem;
            setStatus(row, found.status, found.changes);
        } else if (const auto status = service.statusCounts(each, changes)) {
            setStatus(row, *status, changes);
        } else {
            row.problem = status.error().text();
        }
        found.repositories.append(row);
    }
    return found;
}

void GitModel::takeIn(const Found& found) {
    const bool isOther = found.repository != m_repository;
    if (isOther) {
        clearFile();
    }
    m_repositories.setRows(found.repositories);
    m_staged.setRows(found.lists.staged);
    m_unstaged.setRows(found.lists.unstaged);
    m_conflicted.setRows(found.lists.conflicted);
    m_files.setLists(found.lists, found.stashes);
    m_branches.setRows(found.branches);
    m_stashes.setRows(found.stashes);
    m_history.setRows(found.history);
    takeInState(found);
    m_wanted = found.repository;
    if (isOther) {
        m_repository = found.repository;
        Q_EMIT repositoryChanged();
    }
    followSelection();
    updateCurrentRow();
}

void GitModel::takeInState(const Found& found) {
    m_stagedCount = found.lists.stagedCount;
    m_unstagedCount = found.lists.unstagedCount;
    m_changeCount = found.changes;
    m_ownFolder = found.ownFolder;
    m_ownChangeCount = found.ownChanges;
    m_state = found.state;
    m_mark = found.mark;
    m_problem = found.problem;
    m_note = found.note;
    m_status = found.status;
    m_operation = found.operation;
    m_hasMoreHistory = found.hasMoreHistory;
    m_details = found.details;
    Q_EMIT statusChanged();
    Q_EMIT historyChanged();
    Q_EMIT detailsChanged();
}

void GitModel::loadMoreHistory() {
    ORV_ASSERT_MAIN_THREAD();
    if (!m_hasMoreHistory || m_isLoadingHistory || m_history.rows().isEmpty()) {
        return;
    }
    m_isLoadingHistory = true;
    // From the same commit on, so that what comes follows what is there.
    const HistoryQuery query{
        .limit = historyPage, .skip = m_history.rowCount(), .from = m_history.rows().first().key, .path = {}};
    const auto work = [reader = m_reader, repository = m_repository, query] {
        return reader.history(repository, query);
    };
    onFinished(
        runIn(m_overview.pool(), work), this,
        [this, at = m_generation, query](const GitOutcome<QList<HistoryEntry>>& page) {
            m_isLoadingHistory = false;
            const auto& rows = m_history.rows();
            const bool isStale = at != m_generation || rows.size() != query.skip || rows.first().key != query.from;
            if (isStale || !page) {
                return;
            }
            m_history.setRows(rows + commitRows(*page, QDateTime::currentDateTime()));
            m_hasMoreHistory = page->size() == historyPage;
            Q_EMIT historyChanged();
        });
}

} // namespace orv
