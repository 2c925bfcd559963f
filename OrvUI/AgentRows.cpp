#include "OrvUI/AgentRows.h"

#include "OrvCore/AgentCommandBuilder.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <iterator>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(AgentRows)
};

/// The two letters on an agent's tile; a custom one has a picture.
constexpr std::array letters{u"Cl", u"Cx", u"Ge", u"An", u""};
static_assert(letters.size() == allAgentKinds.size());

QString lettersOf(AgentKind kind) {
    return QString::fromUtf16(letters[static_cast<size_t>(kind)]);
}

/// "2.1.4" of "2.1.4 (Claude Code)" or "codex-cli 2.1.4"; all of it where there is no number.
QString numberIn(const QString& version) {
    static const QRegularExpression number(u"\\d+(\\.\\d+)+[-.\\w]*"_s);
    const auto found = number.match(version);
    return found.hasMatch() ? found.captured() : version;
}

QString iconOf(const QString& tool) {
    struct Entry {
        QLatin1StringView tool;
        QLatin1StringView icon;
    };
    static constexpr std::array icons{
        Entry{"Read"_L1, "file-text"_L1},
        Entry{"NotebookRead"_L1, "file-text"_L1},
        Entry{"Grep"_L1, "search"_L1},
        Entry{"Glob"_L1, "search"_L1},
        Entry{"LS"_L1, "folder"_L1},
        Entry{"Write"_L1, "file-plus-2"_L1},
        Entry{"Edit"_L1, "file-pen-line"_L1},
        Entry{"MultiEdit"_L1, "file-pen-line"_L1},
        Entry{"NotebookEdit"_L1, "file-pen-line"_L1},
        Entry{"Bash"_L1, "terminal"_L1},
        Entry{"WebFetch"_L1, "globe"_L1},
        Entry{"WebSearch"_L1, "globe"_L1},
        Entry{"Task"_L1, "sparkles"_L1},
        Entry{"TodoWrite"_L1, "list-todo"_L1},
    };
    const auto found = std::ranges::find(icons, tool, &Entry::tool);
    return found == icons.end() ? u"settings"_s : QString(found->icon);
}

bool isPlan(const AgentEventRow& row) {
    return row.kind == "tool"_L1 && row.name == "TodoWrite"_L1;
}

QString attentionText(AgentRun::Attention attention) {
    switch (attention) {
    case AgentRun::Attention::input:
        return Words::tr("Waits for an answer that it can't get here");
    case AgentRun::Attention::quiet:
        return Words::tr("Silent for a while");
    case AgentRun::Attention::none:
        break;
    }
    return {};
}

/// What the user said last: an agent that keeps no session is told what went before, too.
QString wordsOf(const AgentRun::Facts& facts) {
    return facts.parentID ? AgentCommandBuilder::followUpMessage(facts.task) : facts.task;
}

QString counted(qint64 count) {
    constexpr qint64 thousand = 1000;
    if (count < thousand) {
        return QString::number(count);
    }
    if (count < thousand * thousand) {
        return QString::number(count / thousand) + u'k';
    }
    return QString::number(static_cast<double>(count) / (thousand * thousand), 'f', 1) + u'M';
}

} // namespace

QString agentText(QStringView words) {
    return words.isEmpty() ? QString() : QCoreApplication::translate("Agents", words.toUtf8().constData());
}

QString agentDurationText(const AgentRun& run, const QDateTime& now) {
    constexpr qint64 minute = 60;
    const qint64 seconds = std::max<qint64>(run.facts().startedAt.secsTo(run.endedAt().value_or(now)), 0);
    if (seconds < minute) {
        return u"%1 s"_s.arg(seconds);
    }
    const qint64 minutes = seconds / minute;
    return minutes < minute ? u"%1 min"_s.arg(minutes) : u"%1 h %2 min"_s.arg(minutes / minute).arg(minutes % minute);
}

QString agentCostText(double costUSD) {
    return u'$' + QString::number(costUSD, 'f', 2);
}

QString agentTokensText(const AgentTokens& tokens) {
    return Words::tr("%1 in · %2 out").arg(counted(tokens.input), counted(tokens.output));
}

QString agentChangesText(const AgentChanges& changes) {
    return changes.fileCount == 1 ? Words::tr("1 file changed") : Words::tr("%1 files changed").arg(changes.fileCount);
}

AgentRunRow AgentRunRow::of(const AgentRun& run) {
    const AgentRun::Facts& facts = run.facts();
    const bool isOpen = run.worktree() && run.worktree()->state == AgentWorktreeState::open;
    return {
        .key = facts.id.toString(QUuid::WithoutBraces),
        .title = wordsOf(facts).section(u'\n', 0, 0),
        .asked = wordsOf(facts),
        .task = facts.task,
        .agentName = agentText(agentInfo(facts.agent).displayName),
        .agentLetters = lettersOf(facts.agent),
        .projectID = facts.projectID,
        .projectName = facts.projectName,
        .autonomyTitle = agentInfo(facts.agent).hasAutonomy ? agentText(autonomyInfo(facts.autonomy).title) : QString(),
        .state = rawValue(run.status().kind),
        .reason = run.status().reason,
        .answer = run.answer().value_or(QString()),
        .duration = run.endedAt() ? agentDurationText(run, *run.endedAt()) : QString(),
        .cost = run.costUSD() ? agentCostText(*run.costUSD()) : QString(),
        .tokens = run.tokens() ? agentTokensText(*run.tokens()) : QString(),
        .changes = run.changes() && run.changes()->fileCount > 0 ? agentChangesText(*run.changes()) : QString(),
        .attention = attentionText(run.attention()),
        .parentKey = facts.parentID ? facts.parentID->toString(QUuid::WithoutBraces) : QString(),
        .branch = run.worktree() ? run.worktree()->branch : QString(),
        .isWorktreeOpen = isOpen,
        .canContinue = !run.isRunning(),
        .canReview = isOpen || (run.changes() && run.changes()->fileCount > 0),
        .isElsewhere = run.owner() == AgentRun::Owner::elsewhere,
        .startedAt = facts.startedAt,
    };
}

const std::vector<RowRole<AgentRunRow>>& AgentRunRow::roles() {
    using Row = AgentRunRow;
    static const std::vector<RowRole<Row>> table{
        memberRole<&Row::key, Row>("key"),
        memberRole<&Row::title, Row>("title"),
        memberRole<&Row::asked, Row>("asked"),
        memberRole<&Row::task, Row>("task"),
        memberRole<&Row::agentName, Row>("agentName"),
        memberRole<&Row::agentLetters, Row>("agentLetters"),
        memberRole<&Row::projectID, Row>("projectID"),
        memberRole<&Row::projectName, Row>("projectName"),
        memberRole<&Row::autonomyTitle, Row>("autonomyTitle"),
        memberRole<&Row::state, Row>("runState"),
        memberRole<&Row::reason, Row>("reason"),
        memberRole<&Row::answer, Row>("answer"),
        memberRole<&Row::duration, Row>("duration"),
        memberRole<&Row::cost, Row>("cost"),
        memberRole<&Row::tokens, Row>("tokens"),
        memberRole<&Row::changes, Row>("changes"),
        memberRole<&Row::attention, Row>("attention"),
        memberRole<&Row::parentKey, Row>("parentKey"),
        memberRole<&Row::branch, Row>("branch"),
        memberRole<&Row::isWorktreeOpen, Row>("isWorktreeOpen"),
        memberRole<&Row::canContinue, Row>("canContinue"),
        memberRole<&Row::canReview, Row>("canReview"),
        memberRole<&Row::isElsewhere, Row>("isElsewhere"),
        memberRole<&Row::startedAt, Row>("startedAt"),
    };
    return table;
}

AgentRow AgentRow::of(AgentKind kind, const AgentCatalog& catalog, AgentKind defaultAgent) {
    const AgentInfo& info = agentInfo(kind);
    const AgentStatus unknown;
    const auto found = catalog.statuses().constFind(kind);
    const AgentStatus& status = found == catalog.statuses().cend() ? unknown : *found;
    const bool isCustom = kind == AgentKind::custom;
    AgentRow row{
        .key = rawValue(kind),
        .name = agentText(info.displayName),
        .letters = lettersOf(kind),
        .version = status.version.value_or(QString()),
        .status = isCustom ? Words::tr("No command set") : Words::tr("Not installed"),
        .notice = agentText(info.notice),
        .installHint = agentText(info.installHint),
        .action = isCustom ? u"setUp"_s : u"copyInstall"_s,
        .isInstalled = status.installed,
        .isDefault = kind == defaultAgent,
        .hasAutonomy = info.hasAutonomy};
    if (status.installed) {
        const QString installed = isCustom ? Words::tr("Command set") : Words::tr("Installed");
        row.status = row.version.isEmpty() ? installed : installed + u" · "_s + numberIn(row.version);
        const bool isSignedIn = status.signIn == AgentStatus::SignIn::found;
        row.action = isCustom || isSignedIn || !catalog.hasCommandLine(kind) ? QString() : u"signIn"_s;
    }
    return row;
}

const std::vector<RowRole<AgentRow>>& AgentRow::roles() {
    using Row = AgentRow;
    static const std::vector<RowRole<Row>> table{
        memberRole<&Row::key, Row>("key"),
        memberRole<&Row::name, Row>("name"),
        memberRole<&Row::letters, Row>("letters"),
        memberRole<&Row::version, Row>("version"),
        memberRole<&Row::status, Row>("status"),
        memberRole<&Row::notice, Row>("notice"),
        memberRole<&Row::installHint, Row>("installHint"),
        memberRole<&Row::action, Row>("action"),
        memberRole<&Row::isInstalled, Row>("isInstalled"),
        memberRole<&Row::isDefault, Row>("isDefault"),
        memberRole<&Row::hasAutonomy, Row>("hasAutonomy"),
        memberRole<&Row::isMissing, Row>("isMissing"),
    };
    return table;
}

const std::vector<RowRole<AutonomyRow>>& AutonomyRow::roles() {
    using Row = AutonomyRow;
    static const std::vector<RowRole<Row>> table{
        memberRole<&Row::key, Row>("key"),
        memberRole<&Row::title, Row>("title"),
        memberRole<&Row::explanation, Row>("explanation"),
        memberRole<&Row::icon, Row>("glyph"),
        memberRole<&Row::isDefault, Row>("isDefault"),
    };
    return table;
}

const std::vector<RowRole<AgentFileRow>>& AgentFileRow::roles() {
    using Row = AgentFileRow;
    static const std::vector<RowRole<Row>> table{
        memberRole<&Row::key, Row>("key"),         memberRole<&Row::originalPath, Row>("originalPath"),
        memberRole<&Row::kind, Row>("kind"),       memberRole<&Row::added, Row>("added"),
        memberRole<&Row::removed, Row>("removed"), memberRole<&Row::isBinary, Row>("isBinary"),
    };
    return table;
}

AgentEventRow AgentEventRow::of(const AgentEvent& event) {
    if (const auto* text = std::get_if<AgentText>(&event)) {
        return {.kind = u"text"_s, .icon = u"message-square"_s, .name = {}, .text = text->text};
    }
    if (const auto* tool = std::get_if<AgentTool>(&event)) {
        return {.kind = u"tool"_s, .icon = iconOf(tool->name), .name = tool->name, .text = tool->detail};
    }
    const AgentResult& result = std::get<AgentResult>(event);
    return {
        .kind = u"result"_s,
        .icon = result.success ? u"circle-check"_s : u"circle-alert"_s,
        .name = {},
        .text = result.summary,
        .isSuccess = result.success};
}

AgentEventsModel::AgentEventsModel(AgentRun* run) : QAbstractListModel(run), m_run(*run) {
    follow(static_cast<qsizetype>(run->events().size()), 0);
    connect(run, &AgentRun::eventsAppended, this, &AgentEventsModel::follow);
    connect(run, &AgentRun::changed, this, &AgentEventsModel::updateCurrent);
}

int AgentEventsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant AgentEventsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const AgentEventRow& row = m_rows[static_cast<size_t>(index.row())].row;
    switch (role) {
    case kindRole:
        return row.kind;
    case iconRole:
        return row.icon;
    case nameRole:
        return row.name;
    case textRole:
        return row.text;
    case successRole:
        return row.isSuccess;
    case currentRole:
        return index.row() == m_current;
    default:
        return {};
    }
}

QHash<int, QByteArray> AgentEventsModel::roleNames() const {
    return {{kindRole, "kind"}, {iconRole, "icon"},         {nameRole, "name"},
            {textRole, "text"}, {successRole, "isSuccess"}, {currentRole, "isCurrent"}};
}

void AgentEventsModel::follow(qsizetype added, qsizetype dropped) {
    drop(dropped);
    // Those that came and went at once are never rows.
    const qsizetype kept = std::min<qsizetype>(added, static_cast<qsizetype>(m_run.events().size()));
    bool isLastNewer = false;
    std::deque<Shown> fresh;
    for (auto event = m_run.events().end() - kept; event != m_run.events().end(); ++event) {
        AgentEventRow row = AgentEventRow::of(*event);
        std::deque<Shown>& rows = fresh.empty() ? m_rows : fresh;
        if (isPlan(row) && !rows.empty() && isPlan(rows.back().row)) {
            rows.back() = {std::move(row), rows.back().events + 1};
            isLastNewer = isLastNewer || fresh.empty();
        } else {
            fresh.push_back({std::move(row)});
        }
    }
    if (isLastNewer) {
        Q_EMIT dataChanged(index(rowCount() - 1), index(rowCount() - 1));
    }
    if (!fresh.empty()) {
        beginInsertRows({}, rowCount(), rowCount() + static_cast<int>(fresh.size()) - 1);
        std::ranges::move(fresh, std::back_inserter(m_rows));
        endInsertRows();
    }
    updateCurrent();
}

void AgentEventsModel::drop(qsizetype events) {
    int gone = 0;
    while (events > 0 && gone < rowCount()) {
        Shown& oldest = m_rows[static_cast<size_t>(gone)];
        const qsizetype taken = std::min(events, oldest.events);
        oldest.events -= taken;
        events -= taken;
        gone += oldest.events == 0 ? 1 : 0;
    }
    if (gone > 0) {
        beginRemoveRows({}, 0, gone - 1);
        m_rows.erase(m_rows.begin(), m_rows.begin() + gone);
        m_current -= std::min(gone, m_current + 1);
        endRemoveRows();
    }
}

void AgentEventsModel::updateCurrent() {
    const int before = std::exchange(m_current, m_run.isRunning() ? rowCount() - 1 : -1);
    if (before == m_current) {
        return;
    }
    for (const int row : {before, m_current}) {
        if (row >= 0 && row < rowCount()) {
            Q_EMIT dataChanged(index(row), index(row), {currentRole});
        }
    }
}

} // namespace orv
