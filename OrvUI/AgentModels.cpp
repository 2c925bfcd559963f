#include "OrvCore/Async.h"
#include "OrvUI/AgentModels_p.h"
#include "OrvUI/AgentRuns.h"
#include "OrvUI/AppModel.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr std::array autonomyIcons{u"eye", u"file-pen-line", u"zap"};
static_assert(autonomyIcons.size() == allAgentAutonomies.size());

} // namespace

AgentModels::AgentModels(AppModel& model)
    : m_model(model),
      m_programs({.shell = {}, .antigravityApp = model.agents().antigravityApp(), .customCommand = [&model] {
                      return model.settings().settings().customAgentCommand;
                  }}) {
    connect(&m_programs, &AgentPrograms::changed, this, &AgentModels::takePrograms);
    const AgentRuns& runs = model.agentRunner();
    connect(&runs, &AgentRuns::runsChanged, this, &AgentModels::updateSoon);
    connect(&runs, &AgentRuns::runChanged, this, &AgentModels::updateSoon);
    connect(&model.agents(), &AgentCatalog::statusesChanged, this, &AgentModels::updateSoon);
    connect(&model.agents(), &AgentCatalog::isLoadingChanged, this, &AgentModels::isLoadingChanged);
    connect(&model, &AppModel::preferencesChanged, this, &AgentModels::updateSoon);
    connect(&model, &AppModel::preferencesChanged, this, &AgentModels::preferencesChanged);
    connect(&model, &AppModel::aiPanelProjectIDChanged, this, &AgentModels::updateSoon);
    connect(&model, &AppModel::agentErrorChanged, this, &AgentModels::errorChanged);
    connect(&model, &AppModel::agentDraftChanged, this, &AgentModels::takeDraft);
    connect(&model, &AppModel::tasksChanged, this, &AgentModels::updateSoon); // the names of those that are linked
    update();
}

void AgentModels::updateSoon() {
    if (!std::exchange(m_isUpdateDue, true)) {
        QMetaObject::invokeMethod(this, &AgentModels::update, Qt::QueuedConnection);
    }
}

bool AgentModels::isShown(const AgentRun& run) const {
    return m_filter == all || run.isRunning() == (m_filter == running);
}

void AgentModels::update() {
    m_isUpdateDue = false;
    QList<AgentRunRow> runs;
    QList<AgentRunRow> conversation;
    for (const AgentRun* run : m_model.agentRuns()) {
        const bool isOfPanel = run->facts().projectID == m_model.aiPanelProjectID();
        if (!isShown(*run) && !isOfPanel) {
            continue;
        }
        const AgentRunRow row = AgentRunRow::of(*run);
        if (isShown(*run)) {
            runs.append(row);
        }
        if (isOfPanel) {
            conversation.prepend(row);
        }
    }
    m_runs.setRows(runs);
    m_projectRuns.setRows(conversation);

    const AppSettings& settings = m_model.settings().settings();
    QList<AgentRow> agents;
    for (const AgentKind kind : allAgentKinds) {
        agents.append(AgentRow::of(kind, m_model.agents(), settings.defaultAgent));
        agents.last().isMissing = m_programs.isMissing(kind);
    }
    m_agents.setRows(agents);
    QList<AutonomyRow> autonomies;
    for (const AgentAutonomy autonomy : allAgentAutonomies) {
        const AutonomyInfo& info = autonomyInfo(autonomy);
        autonomies.append(
            {.key = rawValue(autonomy),
             .title = agentText(info.title),
             .explanation = agentText(info.explanation),
             .icon = QString::fromUtf16(autonomyIcons[static_cast<size_t>(autonomy)]),
             .isDefault = autonomy == settings.agentAutonomy});
    }
    m_autonomies.setRows(autonomies);
    m_events.removeIf([](const auto& entry) { return entry.value().isNull(); });
    Q_EMIT updated();
}

void AgentModels::setFilterIndex(int index) {
    if (index >= all && index <= finished && index != m_filter) {
        m_filter = index;
        Q_EMIT filterChanged();
        update();
    }
}

int AgentModels::workingCount() const {
    return m_model.runningAgentCount();
}
QString AgentModels::workingText() const {
    const int count = workingCount();
    return count > 0 ? tr("%1 working").arg(count) : QString();
}

QString AgentModels::totals(const QString& projectID) const {
    const AgentTotals totals = m_model.agentRunner().totals(projectID);
    QStringList parts;
    if (totals.costUSD > 0) {
        parts.append(agentCostText(totals.costUSD));
    }
    if (totals.tokens != AgentTokens{}) {
        parts.append(agentTokensText(totals.tokens));
    }
    return parts.join(u" · "_s);
}

QString AgentModels::totalsText() const {
    return totals({});
}
QString AgentModels::projectTotalsText() const {
    return m_model.aiPanelProjectID() ? totals(*m_model.aiPanelProjectID()) : QString();
}
bool AgentModels::isLoading() const {
    return m_model.agents().isLoading();
}
QString AgentModels::error() const {
    return m_model.agentError().value_or(QString());
}
int AgentModels::defaultAgent() const {
    return static_cast<int>(m_model.settings().settings().defaultAgent);
}
int AgentModels::autonomy() const {
    return static_cast<int>(m_model.settings().settings().agentAutonomy);
}
QString AgentModels::customCommand() const {
    return m_model.settings().settings().customAgentCommand;
}
bool AgentModels::usesWorktrees() const {
    return m_model.settings().settings().agentWorktrees;
}

void AgentModels::setDefaultAgent(int index) {
    if (const auto kind = at(allAgentKinds, index)) {
        m_model.changeSettings([kind](AppSettings& settings) { settings.defaultAgent = *kind; });
    }
}
void AgentModels::setAutonomy(int index) {
    if (const auto autonomy = at(allAgentAutonomies, index)) {
        m_model.changeSettings([autonomy](AppSettings& settings) { settings.agentAutonomy = *autonomy; });
    }
}
void AgentModels::setCustomCommand(const QString& command) {
    m_model.changeSettings([command](AppSettings& settings) { settings.customAgentCommand = command; });
}
void AgentModels::setUsesWorktrees(bool isOn) {
    m_model.changeSettings([isOn](AppSettings& settings) { settings.agentWorktrees = isOn; });
}

void AgentModels::takePrograms() {
    for (const AgentKind kind : allAgentKinds) {
        if (!m_programs.isMissing(kind) && AgentPrograms::isMissingText(kind, error())) {
            m_model.setAgentError({}); // no longer true
        }
    }
    Q_EMIT refused({}, {});
    refreshAgents();
    updateSoon();
}

QString AgentModels::whyMissing(int agent) const {
    const auto kind = at(allAgentKinds, agent);
    return kind && m_programs.isMissing(*kind) ? AgentPrograms::missingText(*kind) : QString();
}

bool AgentModels::hasAutonomy(int agent) const {
    const auto kind = at(allAgentKinds, agent);
    return kind && agentInfo(*kind).hasAutonomy;
}

QString AgentModels::autonomyExplanation(int agent, int autonomy) const {
    const auto kind = at(allAgentKinds, agent);
    const auto level = at(allAgentAutonomies, autonomy);
    return kind && level ? agentText(orv::autonomyExplanation(*kind, *level)) : QString();
}

/// It would be a run that fails, and is kept. Somebody may have installed it just now: the next press finds that.
bool AgentModels::refusesMissing(AgentKind kind) {
    // What a custom agent lacks is said where it is to be started.
    const bool isMissing = kind != AgentKind::custom && m_programs.isMissing(kind);
    if (isMissing) {
        m_programs.look();
        m_model.setAgentError(AgentPrograms::missingText(kind));
    }
    return isMissing;
}

AgentRun* AgentModels::run(const QString& key) const {
    return m_model.agentRunner().run(QUuid::fromString(key));
}

/// Its agent is the one that it was: there is no other to be chosen.
bool AgentModels::refuses(const AgentRun& run) {
    const AgentKind kind = run.facts().agent;
    const bool isMissing = refusesMissing(kind);
    if (isMissing) {
        const AgentInfo& info = agentInfo(kind);
        m_model.setAgentError(tr("%1 was not found by the login shell. Install it with “%2”, then try again.")
                                  .arg(agentText(info.displayName), agentText(info.installHint)));
    }
    return isMissing;
}

/// Where it was asked for, and not in the composer, which may be far away.
bool AgentModels::tell(const QString& key, bool isDone) {
    const QString reason = isDone ? QString() : error();
    if (!isDone) {
        m_model.setAgentError({});
    }
    Q_EMIT refused(key, reason);
    return isDone;
}

bool AgentModels::continueRun(const QString& key, const QString& message) {
    AgentRun* parent = run(key);
    const bool isSent = parent != nullptr && !refuses(*parent) && m_model.continueAgent(*parent, message) != nullptr;
    if (isSent) {
        setWords(key, {});
    }
    return tell(key, isSent);
}

bool AgentModels::retry(const QString& key) {
    const AgentRun* failed = run(key);
    return tell(key, failed != nullptr && !refuses(*failed) && m_model.retryAgent(*failed) != nullptr);
}

void AgentModels::stop(const QString& key) {
    if (AgentRun* stopped = run(key)) {
        m_model.stopAgent(stopped);
    }
}

void AgentModels::stopLatest(const QString& projectID) {
    const QList<AgentRun*>& runs = m_model.agentRuns();
    const auto latest = std::ranges::find_if(runs, [&](const AgentRun* run) {
        return run->isRunning() && (projectID.isEmpty() || run->facts().projectID == projectID);
    });
    if (latest != runs.end()) {
        m_model.stopAgent(*latest);
    }
}

QAbstractListModel* AgentModels::events(const QString& key) {
    if (const QPointer<AgentEventsModel> known = m_events.value(key)) {
        return known;
    }
    AgentRun* shown = run(key);
    if (shown == nullptr) {
        return nullptr;
    }
    m_model.agentRunner().loadEvents(shown);
    auto* events = new AgentEventsModel(shown);
    m_events.insert(key, events);
    return events;
}

QString AgentModels::duration(const QString& key) const {
    const AgentRun* shown = run(key);
    return shown != nullptr ? agentDurationText(*shown, QDateTime::currentDateTimeUtc()) : QString();
}

void AgentModels::review(const QString& key) {
    const AgentRun* reviewed = run(key);
    QList<AgentFileRow> rows;
    QStringList text;
    const std::optional<AgentWorktree> tree = reviewed != nullptr ? reviewed->worktree() : std::nullopt;
    m_reviewKey = reviewed != nullptr ? key : QString();
    m_reviewBranch = tree && tree->state == AgentWorktreeState::open ? tree->branch : QString();
    if (reviewed != nullptr && reviewed->changes()) {
        const AgentChanges& changes = *reviewed->changes();
        for (const AgentFileChange& file : changes.files) {
            rows.append(
                {.key = file.path,
                 .originalPath = file.originalPath.value_or(QString()),
                 .kind = rawValue(file.kind),
                 .added = file.added,
                 .removed = file.removed,
                 .isBinary = file.isBinary});
        }
        text.append(u"%1, +%2 \u2212%3."_s.arg(agentChangesText(changes)).arg(changes.added).arg(changes.removed));
        if (changes.dirtyBefore > 0) {
            text.append(tr("Uncommitted files before it began: %1.").arg(changes.dirtyBefore));
        }
        if (changes.isShared) {
            text.append(tr("Another run worked here at the same time."));
        }
        if (!changes.note.isEmpty()) {
            text.append(changes.note);
        }
    }
    m_reviewText = text.join(u' ');
    m_reviewFiles.setRows(rows);
    Q_EMIT reviewChanged();
}

void AgentModels::mergeBack(const QString& key) {
    if (const AgentRun* merged = run(key)) {
        m_model.mergeAgentWork(*merged);
    }
}

void AgentModels::discardWorktree(const QString& key, bool force) {
    if (const AgentRun* discarded = run(key)) {
        m_model.discardAgentWork(
            *discarded, force ? TaskWorktrees::Discard::always : TaskWorktrees::Discard::ifNothingIsLost);
    }
}

void AgentModels::signIn(int agent) {
    if (const auto kind = at(allAgentKinds, agent)) {
        m_model.signIn(*kind);
    }
}

void AgentModels::refreshAgents() {
    m_model.agents().refresh();
    m_programs.look();
}

} // namespace orv
