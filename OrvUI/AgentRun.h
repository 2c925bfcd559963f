#pragma once

#include "OrvCore/AgentRunRecord.h"

#include <QObject>

#include <deque>

#include <sys/types.h>

namespace orv {

/// One task that was handed to an agent, from its start on. Lives on the main thread; whoever follows the process feeds
/// it.
class AgentRun : public QObject {
    Q_OBJECT
public:
    struct Status {
        using Kind = AgentRunState;
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
        QString projectRoot; ///< where the agent works: the project's folder, or one of the run's own
        QString task;        ///< trimmed
        AgentAutonomy autonomy = AgentAutonomy::edit;
        std::optional<QUuid> linkedTaskID; ///< the to-do item that it works on
        std::optional<QUuid> parentID;     ///< the run that it continues
        QDateTime startedAt;
    };

    /// Who runs it.
    enum class Owner {
        here,      ///< this process, or nobody any more
        elsewhere, ///< another process: what is known of it is what that one stores
    };
    /// Why someone should look at a run that goes on.
    enum class Attention {
        none,
        input, ///< it asks for something that nobody can give it
        quiet, ///< nothing came from it for long
    };

    /// What is kept of the output: the newest of it. Text counts in UTF-16 code units.
    struct Limits {
        size_t events = 5000;
        qsizetype textLength = 4 * 1024 * 1024;
    };

    AgentRun(Facts facts, Limits limits, QObject* parent = nullptr);
    explicit AgentRun(Facts facts, QObject* parent = nullptr) : AgentRun(std::move(facts), Limits{}, parent) {}
    /// One that was stored; its events are not part of that.
    AgentRun(const AgentRunRecord& record, Owner owner, Limits limits, QObject* parent = nullptr);

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
    [[nodiscard]] pid_t pid() const { return m_pid; } ///< -1 before the start, and of a stored one
    [[nodiscard]] Owner owner() const { return m_owner; }
    [[nodiscard]] Attention attention() const { return m_attention; }
    /// Absent while nothing was reported. Grows while the run goes on.
    [[nodiscard]] const std::optional<AgentTokens>& tokens() const { return m_tokens; }
    /// What became of the project's files; absent until that is known, and where there is no git.
    [[nodiscard]] const std::optional<AgentChanges>& changes() const { return m_changes; }
    /// The work tree that it has to itself.
    [[nodiscard]] const std::optional<AgentWorktree>& worktree() const { return m_worktree; }
    [[nodiscard]] AgentRunRecord record() const;
    /// The agent's final answer; absent while there is none, and of a run whose report was empty.
    [[nodiscard]] std::optional<QString> answer() const;
    /// What a later run is told that it answered: the answer; where the agent reports none, the end of what it printed.
    [[nodiscard]] QString lastWords() const;
    static constexpr qsizetype longestLastWords = 8 * 1024;

    void append(const QList<AgentLine>& lines);
    /// Of a stored run, whose outcome is known already: the events alone.
    void appendStored(const QList<AgentLine>& lines);
    void requestStop() { m_stopRequested = true; }
    void setPid(pid_t pid) { m_pid = pid; }
    void setAttention(Attention attention);
    void setChanges(const AgentChanges& changes);
    /// `folder`: where in it the agent works.
    void setWorktree(const AgentWorktree& worktree, const QString& folder);
    /// What another process has stored since.
    void takeIn(const AgentRunRecord& record, Owner owner);
    /// The process has ended. Only the first call counts.
    void finish(int exitCode, const QDateTime& now);

Q_SIGNALS:
    /// `added` events came at the end, then `dropped` went at the front.
    void eventsAppended(qsizetype added, qsizetype dropped);
    /// Anything but the events.
    void changed();

private:
    void keep(const AgentEvent& event);
    void take(const AgentEvent& event);
    void take(const AgentUsage& usage);
    [[nodiscard]] qsizetype dropOldest();
    [[nodiscard]] Status finalStatus(int exitCode) const;
    [[nodiscard]] QString endOfText() const;

    Facts m_facts;
    const Limits m_limits;
    Owner m_owner = Owner::here;
    pid_t m_pid = -1;
    Attention m_attention = Attention::none;
    Status m_status;
    std::deque<AgentEvent> m_events;
    qsizetype m_textLength = 0;
    qsizetype m_droppedEvents = 0;
    std::optional<QString> m_sessionID;
    std::optional<QDateTime> m_endedAt;
    std::optional<QString> m_summary;
    QString m_lastWords; ///< of one that has ended
    std::optional<double> m_costUSD;
    std::optional<bool> m_reportedSuccess;
    std::optional<AgentTokens> m_tokens;
    AgentUsage m_lastMessage; ///< the newest message of which tokens were reported, and how many
    std::optional<AgentChanges> m_changes;
    std::optional<AgentWorktree> m_worktree;
    bool m_stopRequested = false;
};

} // namespace orv
