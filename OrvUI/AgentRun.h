#pragma once

#include "OrvCore/AgentEvent.h"
#include "OrvCore/Agents.h"

#include <QDateTime>
#include <QObject>
#include <QUuid>

#include <deque>

#include <sys/types.h>

namespace orv {

/// One task that was handed to an agent, from its start on. Lives on the main thread; whoever follows the process feeds
/// it.
class AgentRun : public QObject {
    Q_OBJECT
public:
    struct Status {
        enum class Kind { running, succeeded, stopped, failed };
        Kind kind = Kind::running;
        QString reason; ///< of a failed one

        bool operator==(const Status&) const = default;
    };

    /// What never changes.
    struct Facts {
        QUuid id = QUuid::createUuid();
        AgentKind agent = AgentKind::claude;
        QString projectID;
        QString projectName;
        QString projectRoot;
        QString task; ///< trimmed
        AgentAutonomy autonomy = AgentAutonomy::edit;
        std::optional<QUuid> linkedTaskID; ///< the to-do item that it works on
        std::optional<QUuid> parentID;     ///< the run that it continues
        QDateTime startedAt;
        pid_t pid = -1;
    };

    /// What is kept of the output: the newest of it. Text counts in UTF-16 code units.
    struct Limits {
        size_t events = 5000;
        qsizetype textLength = 4 * 1024 * 1024;
    };

    AgentRun(Facts facts, Limits limits, QObject* parent = nullptr);
    explicit AgentRun(Facts facts, QObject* parent = nullptr) : AgentRun(std::move(facts), Limits{}, parent) {}

    [[nodiscard]] const Facts& facts() const { return m_facts; }
    [[nodiscard]] const Status& status() const { return m_status; }
    [[nodiscard]] bool isRunning() const { return m_status.kind == Status::Kind::running; }
    [[nodiscard]] const std::deque<AgentEvent>& events() const { return m_events; }
    [[nodiscard]] qsizetype droppedEvents() const { return m_droppedEvents; } ///< older than those
    [[nodiscard]] const std::optional<QString>& sessionID() const { return m_sessionID; }
    [[nodiscard]] const std::optional<QDateTime>& endedAt() const { return m_endedAt; }
    [[nodiscard]] const std::optional<QString>& summary() const { return m_summary; } ///< as the agent reported it
    [[nodiscard]] const std::optional<double>& costUSD() const { return m_costUSD; }
    [[nodiscard]] const std::optional<bool>& reportedSuccess() const { return m_reportedSuccess; }
    [[nodiscard]] bool stopRequested() const { return m_stopRequested; }
    /// The agent's final answer; absent while there is none, and of a run whose report was empty.
    [[nodiscard]] std::optional<QString> answer() const;

    void append(const QList<AgentLine>& lines);
    void requestStop() { m_stopRequested = true; }
    /// The process has ended. Only the first call counts.
    void finish(int exitCode, const QDateTime& now);

Q_SIGNALS:
    /// `added` events came at the end, then `dropped` went at the front.
    void eventsAppended(qsizetype added, qsizetype dropped);
    /// Session, summary, cost or status.
    void changed();

private:
    void take(const AgentEvent& event);
    [[nodiscard]] qsizetype dropOldest();
    [[nodiscard]] Status finalStatus(int exitCode) const;

    const Facts m_facts;
    const Limits m_limits;
    Status m_status;
    std::deque<AgentEvent> m_events;
    qsizetype m_textLength = 0;
    qsizetype m_droppedEvents = 0;
    std::optional<QString> m_sessionID;
    std::optional<QDateTime> m_endedAt;
    std::optional<QString> m_summary;
    std::optional<double> m_costUSD;
    std::optional<bool> m_reportedSuccess;
    bool m_stopRequested = false;
};

} // namespace orv
