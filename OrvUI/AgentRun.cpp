#include "OrvUI/AgentRun.h"

#include "OrvCore/Async.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(AgentRun)
};

/// The part of an event that can be long.
QString& text(AgentEvent& event) {
    struct Part {
        QString& operator()(AgentText& prose) const { return prose.text; }
        QString& operator()(AgentTool& tool) const { return tool.detail; }
        QString& operator()(AgentResult& result) const { return result.summary; }
    };
    return std::visit(Part{}, event);
}

} // namespace

AgentRun::AgentRun(Facts facts, Limits limits, QObject* parent)
    : QObject(parent), m_facts(std::move(facts)), m_limits(limits) {
    ORV_ASSERT_MAIN_THREAD();
}

AgentRun::AgentRun(const AgentRunRecord& record, Owner owner, Limits limits, QObject* parent)
    : AgentRun(
          Facts{
              .id = record.id,
              .agent = record.agent,
              .projectID = record.projectID,
              .projectName = record.projectName,
              .projectRoot = record.projectRoot,
              .task = record.task,
              .autonomy = record.autonomy,
              .linkedTaskID = record.linkedTaskID,
              .parentID = record.parentID,
              .startedAt = record.startedAt},
          limits, parent) {
    takeIn(record, owner);
}

AgentRunRecord AgentRun::record() const {
    // What no agent writes in earnest must not fill the disk with every change.
    constexpr qsizetype longestSummary = 256 * 1024;
    return {
        .id = m_facts.id,
        .agent = m_facts.agent,
        .projectID = m_facts.projectID,
        .projectName = m_facts.projectName,
        .projectRoot = m_facts.projectRoot,
        .task = m_facts.task,
        .autonomy = m_facts.autonomy,
        .linkedTaskID = m_facts.linkedTaskID,
        .parentID = m_facts.parentID,
        .startedAt = m_facts.startedAt,
        .endedAt = m_endedAt,
        .state = m_status.kind,
        .reason = m_status.reason.left(longestSummary),
        .sessionID = m_sessionID,
        .summary = m_summary ? std::optional(m_summary->left(longestSummary)) : std::nullopt,
        .lastWords = m_lastWords,
        .costUSD = m_costUSD,
        .tokens = m_tokens,
        .changes = m_changes,
        .worktree = m_worktree};
}

void AgentRun::takeIn(const AgentRunRecord& record, Owner owner) {
    ORV_ASSERT_MAIN_THREAD();
    if (record == this->record() && owner == m_owner) {
        return;
    }
    m_owner = owner;
    m_facts.projectRoot = record.projectRoot;
    m_endedAt = record.endedAt;
    m_status = {record.state, record.reason};
    m_sessionID = record.sessionID;
    m_summary = record.summary;
    m_lastWords = record.lastWords;
    m_costUSD = record.costUSD;
    m_tokens = record.tokens;
    m_changes = record.changes;
    m_worktree = record.worktree;
    Q_EMIT changed();
}

void AgentRun::setAttention(Attention attention) {
    if (attention != m_attention) {
        m_attention = attention;
        Q_EMIT changed();
    }
}

void AgentRun::setChanges(const AgentChanges& changes) {
    m_changes = changes;
    Q_EMIT changed();
}

void AgentRun::setWorktree(const AgentWorktree& worktree, const QString& folder) {
    m_worktree = worktree;
    m_facts.projectRoot = folder;
    Q_EMIT changed();
}

std::optional<QString> AgentRun::answer() const {
    return m_summary && !m_summary->isEmpty() ? m_summary : std::nullopt;
}

QString AgentRun::lastWords() const {
    return answer().value_or(m_lastWords);
}

/// The newest whole lines that are not too long together; of a line that is so alone, its end.
QString AgentRun::endOfText() const {
    QStringList lines;
    qsizetype left = longestLastWords;
    for (auto event = m_events.rbegin(); event != m_events.rend() && left > 0; ++event) {
        const auto* said = std::get_if<AgentText>(&*event);
        if (said == nullptr) {
            continue;
        }
        if (said->text.size() > left && !lines.isEmpty()) {
            break;
        }
        lines.prepend(said->text.right(left));
        left -= said->text.size() + 1;
    }
    return lines.join(u'\n');
}

void AgentRun::append(const QList<AgentLine>& lines) {
    ORV_ASSERT_MAIN_THREAD();
    qsizetype count = 0;
    bool isChanged = false;
    for (const AgentLine& line : lines) {
        if (line.sessionID && line.sessionID != m_sessionID) {
            m_sessionID = line.sessionID;
            isChanged = true;
        }
        if (line.usage) {
            take(*line.usage);
            isChanged = true;
        }
        for (const AgentEvent& event : line.events) {
            take(event);
            isChanged = isChanged || std::holds_alternative<AgentResult>(event);
            ++count;
        }
    }
    if (count > 0) {
        Q_EMIT eventsAppended(count, dropOldest());
    }
    if (isChanged) {
        Q_EMIT changed();
    }
}

void AgentRun::appendStored(const QList<AgentLine>& lines) {
    ORV_ASSERT_MAIN_THREAD();
    qsizetype count = 0;
    for (const AgentLine& line : lines) {
        for (const AgentEvent& event : line.events) {
            keep(event);
            ++count;
        }
    }
    if (count > 0) {
        Q_EMIT eventsAppended(count, dropOldest());
    }
}

void AgentRun::take(const AgentEvent& event) {
    if (const auto* result = std::get_if<AgentResult>(&event)) {
        m_reportedSuccess = result->success;
        m_summary = result->summary;
        m_costUSD = result->costUSD ? result->costUSD : m_costUSD;
    }
    keep(event);
}

void AgentRun::keep(const AgentEvent& event) {
    m_events.push_back(event);
    QString& kept = text(m_events.back());
    kept.truncate(m_limits.textLength);
    m_textLength += kept.size();
}

/// A message comes in several lines, each with what went into the whole of it so far.
void AgentRun::take(const AgentUsage& usage) {
    if (usage.messageID.isEmpty()) {
        m_tokens = usage.tokens;
        return;
    }
    AgentTokens tokens = m_tokens.value_or(AgentTokens{});
    if (usage.messageID == m_lastMessage.messageID) {
        tokens.input -= m_lastMessage.tokens.input;
        tokens.output -= m_lastMessage.tokens.output;
    }
    tokens += usage.tokens;
    m_tokens = tokens;
    m_lastMessage = usage;
}

qsizetype AgentRun::dropOldest() {
    qsizetype dropped = 0;
    while (m_events.size() > m_limits.events || m_textLength > m_limits.textLength) {
        m_textLength -= text(m_events.front()).size();
        m_events.pop_front();
        ++dropped;
    }
    m_droppedEvents += dropped;
    return dropped;
}

void AgentRun::finish(int exitCode, const QDateTime& now) {
    ORV_ASSERT_MAIN_THREAD();
    if (!isRunning()) {
        return;
    }
    m_endedAt = now;
    m_attention = Attention::none;
    m_status = finalStatus(exitCode);
    if (!agentInfo(m_facts.agent).keepsSessions) {
        m_lastWords = endOfText();
    }
    Q_EMIT changed();
}

AgentRun::Status AgentRun::finalStatus(int exitCode) const {
    if (m_stopRequested) {
        return {Status::Kind::stopped, {}};
    }
    if (exitCode == 0 && m_reportedSuccess.value_or(true)) {
        return {Status::Kind::succeeded, {}};
    }
    return {Status::Kind::failed, answer().value_or(Words::tr("Exited with code %1").arg(exitCode))};
}

} // namespace orv
