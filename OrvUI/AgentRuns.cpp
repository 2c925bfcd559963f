#include "OrvUI/AgentRuns.h"

#include "OrvCore/AgentCommandBuilder.h"
#include "OrvCore/Async.h"
#include "OrvCore/StoreWatcher.h"
#include "OrvUI/AgentRuns_p.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <csignal>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr int gitThreads = 2;

} // namespace

AgentRuns::AgentRuns(Options options, QObject* parent) : QObject(parent), m_options(std::move(options)) {
    ORV_ASSERT_MAIN_THREAD();
    m_storePool.setObjectName(u"orv-agent-store"_s);
    m_storePool.setMaxThreadCount(1);
    m_workPool.setObjectName(u"orv-agent-work"_s);
    m_workPool.setMaxThreadCount(gitThreads);
    m_watcher = new StoreWatcher({m_options.files.marker()}, this);
    connect(m_watcher, &StoreWatcher::changed, this, [this] { reload(); });
    connect(&m_outputs, &QFileSystemWatcher::fileChanged, this, [this](const QString& path) {
        for (AgentRun* run : std::as_const(m_runs)) {
            if (m_options.files.outputFile(run->facts().id) == path) {
                readMore(run);
            }
        }
    });
    m_storePool.start([files = m_options.files, limits = m_options.fileLimits] { files.prune(limits); });
    reload();
}

AgentRuns::~AgentRuns() {
    disconnect(m_watcher, nullptr, this, nullptr);
    m_cancellation.cancel();
    m_workPool.clear();
    for (const auto& [id, active] : m_active.asKeyValueRange()) {
        if (active->process) {
            active->process->disconnect(this);
            active->process.reset(); // kills the group
        }
    }
    m_workPool.waitForDone();
    m_storePool.waitForDone();
    for (const auto& [id, active] : m_active.asKeyValueRange()) {
        AgentRun* run = this->run(id);
        run->disconnect(this);
        run->requestStop();
        run->finish(0, QDateTime::currentDateTimeUtc());
        if (active->ready.hold) {
            (void)m_options.files.write(run->record());
            QDir(m_options.files.scratchFolder(id)).removeRecursively();
        }
    }
}

AgentRun* AgentRuns::run(const QUuid& id) const {
    const auto found =
        std::ranges::find_if(m_runs, [&id](const AgentRun* candidate) { return candidate->facts().id == id; });
    return found == m_runs.end() ? nullptr : *found;
}

int AgentRuns::runningCount() const {
    return static_cast<int>(std::ranges::count_if(m_runs, &AgentRun::isRunning));
}

GitRunner AgentRuns::runner() const {
    return {.extraEnvironment = {}, .purpose = GitPurpose::userAction, .cancellation = m_cancellation};
}

AgentTotals AgentRuns::totals(const QString& projectID) const {
    AgentTotals totals;
    for (const AgentRun* run : m_runs) {
        if (projectID.isEmpty() || run->facts().projectID == projectID) {
            ++totals.runs;
            totals.tokens += run->tokens().value_or(AgentTokens{});
            totals.costUSD += run->costUSD().value_or(0);
        }
    }
    return totals;
}

void AgentRuns::add(AgentRun* run) {
    const auto place = std::ranges::find_if(
        m_runs, [run](const AgentRun* other) { return other->facts().startedAt <= run->facts().startedAt; });
    m_runs.insert(place, run);
    connect(run, &AgentRun::changed, this, [this, run] {
        updateRunningCount();
        Q_EMIT runChanged(run);
    });
}

void AgentRuns::remove(AgentRun* run) {
    m_runs.removeOne(run);
    m_readings.remove(run->facts().id);
    run->disconnect(this);
    run->deleteLater();
    Q_EMIT runsChanged();
    updateRunningCount();
}

void AgentRuns::updateRunningCount() {
    if (std::exchange(m_runningCount, runningCount()) != m_runningCount) {
        Q_EMIT runningCountChanged();
    }
}

std::expected<AgentRun*, QString> AgentRuns::start(const Start& wish) {
    ORV_ASSERT_MAIN_THREAD();
    const AppSettings settings = m_options.settings();
    const AgentRun* parent = wish.replyingTo;
    const std::optional<AgentWorktree> inherited = parent ? parent->worktree() : std::nullopt;
    const bool inherits =
        inherited && inherited->state == AgentWorktreeState::open && QFileInfo(parent->facts().projectRoot).isDir();
    const QString folder = inherits ? parent->facts().projectRoot : wish.projectRoot;
    // An agent finds its sessions by the folder that they were in.
    const bool resumes = parent != nullptr && parent->facts().projectRoot == folder;
    const auto plan = AgentPlanner::plan(wish.agent, wish.task, wish.autonomy, settings, resumes ? parent : nullptr);
    if (!plan) {
        return std::unexpected(plan.error());
    }
    if (!QFileInfo(folder).isDir()) {
        return std::unexpected(AgentPlanner::couldNotStart(wish.agent, qt_error_string(ENOENT)));
    }
    auto* run = new AgentRun(
        AgentRun::Facts{
            .agent = wish.agent,
            .projectID = wish.projectID,
            .projectName = wish.projectName,
            .projectRoot = folder,
            .task = plan->task,
            .autonomy = plan->autonomy,
            .linkedTaskID = wish.linkedTask,
            .parentID = parent ? std::optional(parent->facts().id) : std::nullopt,
            .startedAt = QDateTime::currentDateTimeUtc()},
        m_options.runLimits, this);
    if (inherits) {
        run->setWorktree(*inherited, folder);
    }
    const QUuid id = run->facts().id;
    const auto active = std::make_shared<Active>();
    active->command = plan->command;
    active->words = wish.words.isEmpty() ? plan->task : wish.words;
    m_active.insert(id, active);
    add(run);
    Q_EMIT runsChanged();
    updateRunningCount();

    AgentWork::Request request{.files = m_options.files, .record = run->record(), .worktree = {}, .runner = runner()};
    if (!parent && wish.ownWorktree.value_or(settings.agentWorktrees)) {
        request.worktree = AgentWork::WorktreeWish{
            m_options.worktreeFolder, settings.worktreeCopies(wish.projectID),
            wish.ownWorktree ? AgentWork::WorktreeWish::Need::must : AgentWork::WorktreeWish::Need::ifPossible};
    }
    const auto prepare = [this, id, request] {
        onFinished(
            runIn(m_workPool, [request] { return AgentWork::prepare(request); }), this,
            [this, id](const std::expected<AgentWork::Ready, QString>& ready) { prepared(id, ready); });
    };
    if (wish.anew != nullptr && m_options.endLeft) {
        onFinished(m_options.endLeft(*wish.anew), this, prepare);
    } else {
        prepare();
    }
    return run;
}

namespace {

/// The work tree is gone that the run had to itself, and with it the session, which is found by its folder.
bool isLeftBehind(const AgentRun& run) {
    return run.worktree() &&
           (run.worktree()->state != AgentWorktreeState::open || !QFileInfo(run.facts().projectRoot).isDir());
}

/// What `message` is for an agent that goes on after `run`.
QString taskAfter(const AgentRun& run, const QString& message) {
    const QString task = AgentPlanner::followUp(run, message);
    const AgentRun::Facts& facts = run.facts();
    return isLeftBehind(run) && !task.isEmpty() && agentInfo(facts.agent).keepsSessions
               ? AgentCommandBuilder::followUpTask(facts.task, run.lastWords(), task)
               : task;
}

} // namespace

std::expected<AgentRun*, QString> AgentRuns::goOn(
    const AgentRun& run, const QString& message, const QString& projectRoot, const QString& projectName,
    const std::optional<AgentAutonomy>& autonomy) {
    ORV_ASSERT_MAIN_THREAD();
    const AgentRun::Facts& facts = run.facts();
    return start(
        {.agent = facts.agent,
         .task = taskAfter(run, message),
         .projectID = facts.projectID,
         .projectName = projectName,
         .projectRoot = projectRoot,
         // Somebody may have found it not done after all: what is said later does not settle it.
         .linkedTask = {},
         .autonomy = autonomy.value_or(facts.autonomy),
         .replyingTo = &run,
         .anew = &run,
         .words = message.trimmed()});
}

std::expected<AgentRun*, QString> AgentRuns::retry(
    const AgentRun& run, const QString& projectRoot, const QString& projectName) {
    ORV_ASSERT_MAIN_THREAD();
    const AgentRun::Facts& facts = run.facts();
    const AgentRun* parent = facts.parentID ? this->run(*facts.parentID) : nullptr;
    // A message to a session says nothing without it; any other task says all there is to say.
    const bool wasMessage =
        parent != nullptr && agentInfo(facts.agent).keepsSessions && facts.projectRoot == parent->facts().projectRoot;
    return start(
        {.agent = facts.agent,
         .task = wasMessage ? taskAfter(*parent, facts.task) : facts.task,
         .projectID = facts.projectID,
         .projectName = projectName,
         .projectRoot = projectRoot,
         .linkedTask = facts.linkedTaskID,
         .autonomy = facts.autonomy,
         .replyingTo = parent,
         .anew = &run,
         .ownWorktree = run.worktree() ? std::optional(true) : std::nullopt,
         .words = parent != nullptr ? AgentCommandBuilder::followUpMessage(facts.task) : QString()});
}

void AgentRuns::prepared(const QUuid& id, const std::expected<AgentWork::Ready, QString>& ready) {
    const std::shared_ptr<Active> active = m_active.value(id);
    AgentRun* run = this->run(id);
    if (!active || run == nullptr) {
        return;
    }
    if (!ready) {
        giveUp(run, ready.error());
        return;
    }
    active->ready = *ready;
    if (ready->worktree) {
        run->setWorktree(*ready->worktree, ready->folder);
    }
    if (!ready->storeProblem.isEmpty()) {
        Q_EMIT noted(tr("This run will not be there after a restart: %1").arg(ready->storeProblem));
    }
    if (run->stopRequested()) {
        ended(run, 0);
    } else if (launch(run, *active)) {
        watchSilence(run, *active);
    }
}

bool AgentRuns::launch(AgentRun* run, Active& active) {
    const QUuid id = run->facts().id;
    const QString mark = ChildRecords::newMark();
    auto process = AgentProcess::start(
        {.kind = run->facts().agent,
         .command = active.command,
         .directory = run->facts().projectRoot,
         .task = run->facts().task,
         .mark = mark,
         .outputFile = active.ready.hold ? m_options.files.outputFile(id) : QString()});
    if (!process) {
        giveUp(run, process.error().text());
        return false;
    }
    active.process = *std::move(process);
    run->setPid(active.process->pid());
    const auto note = m_options.children.note(
        {.projectID = run->facts().projectID,
         .directory = run->facts().projectRoot,
         .kind = {},
         .command = active.command,
         .mark = mark,
         .run = id},
        active.process->pid());
    if (!note) {
        qWarning("%s", qUtf8Printable(note.error().text()));
    }
    active.note = note.value_or(nullptr);
    connect(active.process.get(), &AgentProcess::linesRead, this, [this, run](const QList<AgentLine>& lines) {
        heard(run, lines);
    });
    connect(active.process.get(), &AgentProcess::exited, this, [this, run, &active](int code) {
        active.note.reset();
        ended(run, code);
    });
    Q_EMIT runChanged(run);
    return true;
}

/// Nothing of it ran: it leaves nothing behind.
void AgentRuns::giveUp(AgentRun* run, const QString& reason) {
    const QUuid id = run->facts().id;
    const QString text = AgentPlanner::couldNotStart(run->facts().agent, reason);
    const std::shared_ptr<Active> active = m_active.take(id);
    const AgentRun::Facts& facts = run->facts();
    const AgentDraft task{
        .projectID = facts.projectID,
        .text = active->words,
        .taskID = facts.linkedTaskID,
        .sent = AgentDraft::Sent{facts.agent, facts.autonomy, facts.parentID}};
    const auto clear = [files = m_options.files, id, hold = active->ready.hold, worktree = active->ready.worktree] {
        if (worktree) {
            (void)TaskWorktrees(GitRunner{})
                .discard(AgentWork::taskWorktree(*worktree), TaskWorktrees::Discard::ifNothingIsLost);
        }
        // Held to the end, its record gone first: nobody takes it for one that was left behind.
        QDir folder(files.runFolder(id));
        folder.remove(u"run.json"_s);
        folder.removeRecursively();
        if (hold) {
            hold->reset();
        }
    };
    // A look at what is stored may have met it meanwhile.
    onFinished(runIn(m_workPool, clear), this, [this] { (void)reload(); });
    remove(run);
    active->settled.finish();
    Q_EMIT failed(id, text, task);
}

void AgentRuns::heard(AgentRun* run, const QList<AgentLine>& lines) {
    const std::shared_ptr<Active> active = m_active.value(run->facts().id);
    run->setAttention(
        !lines.isEmpty() && AgentPlanner::asksForInput(lines.constLast()) ? AgentRun::Attention::input
                                                                          : AgentRun::Attention::none);
    run->append(lines);
    if (active) {
        active->question.start();
        active->quiet.start();
        if (run->sessionID() != active->storedSession) {
            active->storedSession = run->sessionID();
            store(run);
        }
    }
}

void AgentRuns::watchSilence(AgentRun* run, Active& active) {
    const QUuid id = run->facts().id;
    active.question.setInterval(m_options.questionTime);
    active.quiet.setInterval(m_options.quietTime);
    for (QTimer* timer : {&active.question, &active.quiet}) {
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, [this, id, isLong = timer == &active.quiet] { silent(id, isLong); });
        timer->start();
    }
}

void AgentRuns::silent(const QUuid& id, bool isLong) {
    AgentRun* run = this->run(id);
    if (run == nullptr || !m_active.contains(id) || run->attention() == AgentRun::Attention::input) {
        return;
    }
    if (isLong) {
        run->setAttention(AgentRun::Attention::quiet);
        return;
    }
    // A question stands on a line that has no end yet, so it is no event.
    const auto look = [file = m_options.files.outputFile(id)] { return AgentWork::outputAsksForInput(file); };
    onFinished(runIn(m_storePool, look), this, [this, id](bool asks) {
        const std::shared_ptr<Active> active = m_active.value(id);
        if (AgentRun* asking = this->run(id); asks && asking != nullptr && active && !active->question.isActive()) {
            asking->setAttention(AgentRun::Attention::input);
        }
    });
}

void AgentRuns::ended(AgentRun* run, int exitCode) {
    const std::shared_ptr<Active> active = m_active.value(run->facts().id);
    active->question.stop();
    active->quiet.stop();
    if (active->process) {
        active->process.release()->deleteLater(); // it is its signal that brought us here
    }
    const bool hasRun = run->pid() > 0;
    run->finish(exitCode, QDateTime::currentDateTimeUtc());
    Q_EMIT finished(run);
    if (!hasRun && active->ready.worktree) {
        (void)discardWorktree(run, TaskWorktrees::Discard::ifNothingIsLost);
    }
    const AgentWork::Ready& ready = active->ready;
    if (!hasRun || (ready.snapshots.isEmpty() && ready.note.isEmpty())) {
        settle(run);
        return;
    }
    const bool shared = wasShared(*run);
    const auto look = [files = m_options.files, id = run->facts().id, ready, runner = runner()] {
        return AgentWork::changesSince(files, id, ready, runner);
    };
    onFinished(runIn(m_workPool, look), this, [this, run, shared](AgentChanges changes) {
        changes.isShared = shared;
        run->setChanges(changes);
        settle(run);
    });
}

/// Stores the run as it ended, and lets go of it.
void AgentRuns::settle(AgentRun* run) {
    const QUuid id = run->facts().id;
    const auto write = [files = m_options.files, limits = m_options.fileLimits, record = run->record(),
                        hold = m_active.value(id)->ready.hold] {
        StoreResult written;
        QDir(files.scratchFolder(record.id)).removeRecursively(); // of one that was stopped before it ran
        if (hold) {
            written = files.write(record);
            hold->reset();
            files.prune(limits);
        }
        return written ? QString() : written.error().text();
    };
    onFinished(runIn(m_storePool, write), this, [this, id](const QString& problem) {
        const std::shared_ptr<Active> active = m_active.take(id);
        if (!problem.isEmpty()) {
            Q_EMIT noted(problem);
        }
        if (active) {
            active->settled.finish();
        }
    });
}

void AgentRuns::store(AgentRun* run) {
    const std::shared_ptr<Active> active = m_active.value(run->facts().id);
    if (active && active->ready.hold && active->ready.hold->isValid()) {
        m_storePool.start([files = m_options.files, record = run->record()] { (void)files.write(record); });
    }
}

QFuture<void> AgentRuns::settled(const AgentRun* run) const {
    const std::shared_ptr<Active> active = m_active.value(run->facts().id);
    return active ? active->settled.future() : finishedFuture();
}

QFuture<void> AgentRuns::stop(AgentRun* run) {
    ORV_ASSERT_MAIN_THREAD();
    const QUuid id = run->facts().id;
    if (const std::shared_ptr<Active> active = m_active.value(id)) {
        if (run->isRunning()) {
            run->requestStop();
            if (active->process) {
                active->process->stop(m_options.stopGrace);
            }
        }
        return active->settled.future();
    }
    if (!run->isRunning()) {
        return finishedFuture();
    }
    const Completion completion;
    connect(run, &AgentRun::changed, this, [run, completion, isOver = false]() mutable {
        if (!run->isRunning() && !std::exchange(isOver, true)) {
            completion.finish();
        }
    });
    m_storePool.start([files = m_options.files, id] { (void)files.askToStop(id); });
    return completion.future();
}

QFuture<void> AgentRuns::stopAll() {
    ORV_ASSERT_MAIN_THREAD();
    QList<QFuture<void>> stops;
    for (const QUuid& id : m_active.keys()) {
        stops.append(stop(run(id)));
    }
    return whenAll(stops, this);
}

QList<pid_t> AgentRuns::groups() const {
    QList<pid_t> found;
    for (const auto& [id, active] : m_active.asKeyValueRange()) {
        if (active->process) {
            found.append(active->process->pid());
        }
    }
    return found;
}

void AgentRuns::kill() {
    for (const QUuid& id : m_active.keys()) {
        AgentRun* run = this->run(id);
        run->requestStop();
        if (const auto& process = m_active.value(id)->process) {
            process->kill();
        }
    }
}

bool AgentRuns::wasShared(const AgentRun& run) const {
    const auto holds = [](const QString& folder, const QString& other) {
        return other == folder || other.startsWith(folder + u'/');
    };
    return std::ranges::any_of(m_runs, [&](const AgentRun* other) {
        const QString& folder = other->facts().projectRoot;
        const bool isElsewhere = !holds(folder, run.facts().projectRoot) && !holds(run.facts().projectRoot, folder);
        return other != &run && !isElsewhere && (!other->endedAt() || *other->endedAt() > run.facts().startedAt);
    });
}

} // namespace orv
