#include "OrvCore/AgentCommandBuilder.h"
#include "OrvCore/Async.h"
#include "OrvUI/AppModel_p.h"
#include "OrvUI/TerminalTyping.h"

#include <QFileInfo>
#include <QProcess>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// What a run would be started with, but for its project.
AgentRuns::Start startIn(const Project& project, AgentKind kind, const QString& task) {
    return {
        .agent = kind, .task = task, .projectID = project.id, .projectName = project.name, .projectRoot = project.root};
}

QString goneText(const AgentRun& run) {
    return AppModel::tr("%1 is not among your projects any more.").arg(run.facts().projectName);
}

bool openByName(const QString& application, const QString& folder) {
    return QProcess::startDetached(u"/usr/bin/open"_s, {u"-a"_s, application, folder});
}

} // namespace

AgentCatalog& AppModel::agents() {
    return *d->agents;
}
AgentRuns& AppModel::agentRunner() {
    return *d->agentRuns;
}
TerminalTabs& AppModel::terminals() {
    return *d->terminals;
}
AgentModels* AppModel::agentModels() const {
    return d->agentModels.get();
}
const QList<AgentRun*>& AppModel::agentRuns() const {
    return d->agentRuns->runs();
}
int AppModel::runningAgentCount() const {
    return d->agentRuns->runningCount();
}
const std::optional<AgentDraft>& AppModel::agentDraft() const {
    return d->agentDraft;
}
const std::optional<QString>& AppModel::agentError() const {
    return d->agentError;
}
void AppModel::setAgentDraft(const std::optional<AgentDraft>& draft) {
    d->agentDraft = draft;
    Q_EMIT agentDraftChanged(); // by the same once more, too: it comes again
}
void AppModel::setAgentError(const std::optional<QString>& error) {
    assign(this, d->agentError, error, &AppModel::agentErrorChanged);
}

void AppModel::followAgents() {
    AgentRuns* runs = d->agentRuns.get();
    connect(runs, &AgentRuns::runsChanged, this, &AppModel::agentRunsChanged);
    connect(runs, &AgentRuns::runningCountChanged, this, &AppModel::runningAgentCountChanged);
    connect(runs, &AgentRuns::failed, this, [this](const QUuid&, const QString& reason, const AgentDraft& task) {
        setAgentError(reason);
        setAgentDraft(task); // back into the composer, where what was typed meanwhile stays beside it
    });
    connect(runs, &AgentRuns::noted, this, [this](const QString& text) { report(text, true); });
    connect(runs, &AgentRuns::finished, this, &AppModel::agentFinished);
}

AgentRun* AppModel::taken(const std::expected<AgentRun*, QString>& started) {
    setAgentError(started ? std::nullopt : std::optional(started.error()));
    return started.value_or(nullptr);
}

AgentRun* AppModel::startAgent(
    AgentKind kind, const QString& task, const Project& project, const std::optional<QUuid>& linkedTask,
    const std::optional<AgentAutonomy>& autonomy, const AgentRun* replyingTo) {
    AgentRuns::Start wish = startIn(project, kind, task);
    wish.linkedTask = linkedTask;
    wish.autonomy = autonomy;
    wish.replyingTo = replyingTo;
    return startAgent(wish, project);
}

AgentRun* AppModel::startAgent(const AgentRuns::Start& wish, const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    if (refusesWork()) {
        return nullptr;
    }
    const bool isApplication = wish.agent == AgentKind::antigravity && QFileInfo::exists(d->agents->antigravityApp());
    if (isApplication && !wish.task.trimmed().isEmpty()) {
        openInAntigravity(project, wish.task.trimmed());
        return nullptr;
    }
    return taken(d->agentRuns->start(wish));
}

AgentRun* AppModel::continueAgent(
    const AgentRun& run, const QString& message, const std::optional<AgentAutonomy>& autonomy) {
    ORV_ASSERT_MAIN_THREAD();
    if (message.trimmed().isEmpty() || refusesWork()) {
        return nullptr;
    }
    const Project* project = this->project(run.facts().projectID);
    if (project == nullptr) {
        return taken(std::unexpected(goneText(run)));
    }
    return taken(d->agentRuns->goOn(run, message, project->root, project->name, autonomy));
}

AgentRun* AppModel::retryAgent(const AgentRun& run) {
    ORV_ASSERT_MAIN_THREAD();
    if (refusesWork()) {
        return nullptr;
    }
    const Project* project = this->project(run.facts().projectID);
    return taken(
        project == nullptr ? std::unexpected(goneText(run)) : d->agentRuns->retry(run, project->root, project->name));
}

void AppModel::agentFinished(AgentRun* run) {
    const AgentRun::Facts& facts = run->facts();
    const bool hasSucceeded = run->status().kind == AgentRunState::succeeded;
    if (hasSucceeded && facts.linkedTaskID) {
        setTaskDone(*facts.linkedTaskID, true);
    } else {
        publishSnapshot();
    }
    const AgentFinished event{
        .project = facts.projectName,
        .projectID = facts.projectID,
        .agent = agentText(agentInfo(facts.agent).displayName),
        .success = hasSucceeded,
        .summary = run->answer().value_or(QString())};
    post(event);
    lookAtGitOf(facts.projectRoot); // what it has edited
    Q_EMIT agentRunEnded(event);
}

QFuture<void> AppModel::stopAgent(AgentRun* run) {
    return d->agentRuns->stop(run);
}

QFuture<void> AppModel::stopAllAgents() {
    return d->agentRuns->stopAll();
}

void AppModel::openInAntigravity(const Project& project, const QString& task) {
    const auto open = openApplication ? openApplication : openByName;
    if (!open(d->agents->antigravityApp(), project.root)) {
        setAgentError(AgentPlanner::couldNotStart(AgentKind::antigravity, tr("the application did not open")));
        return;
    }
    if (setClipboard) {
        setClipboard(task);
    }
    setAgentError({});
    report(AgentPlanner::openedInAntigravity(project.name), false);
}

void AppModel::startAgentInTerminal(AgentKind kind, const QString& task, const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    if (refusesWork()) {
        return;
    }
    const QString trimmed = task.trimmed();
    const auto command = AgentCommandBuilder::interactiveCommand(kind, trimmed);
    if (trimmed.isEmpty() || !command) {
        setAgentError(
            trimmed.isEmpty() ? tr("Describe the task first.") : tr("A custom agent can't be started in a terminal."));
        return;
    }
    setAgentError({});
    typeWhenReady(openTerminal(*this, project.root), *command);
}

void AppModel::signIn(AgentKind kind) {
    ORV_ASSERT_MAIN_THREAD();
    const QStringView command = agentInfo(kind).signInCommand;
    if (command.isEmpty()) {
        return;
    }
    // Terminals are on the pages of projects.
    if (d->projects.isEmpty()) {
        report(
            tr("Add a project first: terminals are on the pages of projects. Or run “%1” in one of your own.")
                .arg(command),
            true);
        return;
    }
    typeWhenReady(openTerminal(*this, d->settings->settings().scanRoot), command.toString());
}

void AppModel::draftAgentTaskFor(const QString& taskID) {
    const auto found = std::ranges::find(d->tasks, QUuid(taskID), &ProjectTask::id);
    const Project* owner = found == d->tasks.end() ? nullptr : project(found->projectID);
    if (owner != nullptr) {
        draftAgentTask(*found, *owner);
    }
}

void AppModel::draftAgentTask(const ProjectTask& task, const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    const QString text = task.notes.trimmed().isEmpty() ? task.title : task.title + u"\n\n"_s + task.notes.trimmed();
    setAgentDraft(AgentDraft{project.id, text, task.id});
}

void AppModel::mergeAgentWork(const AgentRun& run) {
    const QString branch = run.worktree() ? run.worktree()->branch : QString();
    onFinished(d->agentRuns->mergeBack(&run), this, [this, branch](const AgentRuns::Outcome& outcome) {
        const QString done = outcome && outcome->isEmpty() ? tr("Merged %1.").arg(branch) : outcome.value_or(QString());
        report(outcome ? done : outcome.error(), !outcome);
    });
}

void AppModel::discardAgentWork(const AgentRun& run, TaskWorktrees::Discard discard) {
    onFinished(d->agentRuns->discardWorktree(&run, discard), this, [this](const AgentRuns::Outcome& outcome) {
        if (!outcome) {
            report(outcome.error(), true);
        }
    });
}

} // namespace orv
