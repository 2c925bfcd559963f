#include "OrvUI/AgentRun.h"

#include "OrvCore/Async.h"

using namespace Qt::StringLiterals;

namespace orv {
namespace {

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

std::optional<QString> AgentRun::answer() const {
    return m_summary && !m_summary->isEmpty() ? m_summary : std::nullopt;
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
        for (const AgentEvent& event : line.events) {
            take(event);
            isChanged = isChanged || std::holds_alternative<AgentResult>(event);
            ++count;
        }
    }
    if (count > 0) {
        const qsizetype dropped = dropOldest();
        Q_EMIT eventsAppended(count, dropped);
    }
    if (isChanged) {
        Q_EMIT changed();
    }
}

void AgentRun::take(const AgentEvent& event) {
    if (const auto* result = std::get_if<AgentResult>(&event)) {
        m_reportedSuccess = result->success;
        m_summary = result->summary;
        m_costUSD = result->costUSD ? result->costUSD : m_costUSD;
    }
    m_events.push_back(event);
    QString& kept = text(m_events.back());
    kept.truncate(m_limits.textLength);
    m_textLength += kept.size();
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
    m_status = finalStatus(exitCode);
    Q_EMIT changed();
}

AgentRun::Status AgentRun::finalStatus(int exitCode) const {
    if (m_stopRequested) {
        return {Status::Kind::stopped, {}};
    }
    if (exitCode == 0 && m_reportedSuccess.value_or(true)) {
        return {Status::Kind::succeeded, {}};
    }
    return {Status::Kind::failed, answer().value_or(u"Exited with code %1"_s.arg(exitCode))};
}

} // namespace orv
