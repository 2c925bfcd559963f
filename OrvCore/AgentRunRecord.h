#pragma once

#include "OrvCore/AgentEvent.h"
#include "OrvCore/Agents.h"
#include "OrvCore/Models.h"

#include <QDateTime>
#include <QUuid>

namespace orv {

enum class AgentRunState { running, succeeded, stopped, failed };
enum class AgentFileChangeKind { modified, added, deleted, renamed };
/// What became of the work tree that a run has to itself.
enum class AgentWorktreeState { open, merged, discarded };

template <>
struct StoredNames<AgentRunState> {
    static constexpr std::array table{
        std::pair{AgentRunState::running, QLatin1StringView("running")},
        std::pair{AgentRunState::succeeded, QLatin1StringView("succeeded")},
        std::pair{AgentRunState::stopped, QLatin1StringView("stopped")},
        std::pair{AgentRunState::failed, QLatin1StringView("failed")},
    };
};

template <>
struct StoredNames<AgentFileChangeKind> {
    static constexpr std::array table{
        std::pair{AgentFileChangeKind::modified, QLatin1StringView("modified")},
        std::pair{AgentFileChangeKind::added, QLatin1StringView("added")},
        std::pair{AgentFileChangeKind::deleted, QLatin1StringView("deleted")},
        std::pair{AgentFileChangeKind::renamed, QLatin1StringView("renamed")},
    };
};

template <>
struct StoredNames<AgentWorktreeState> {
    static constexpr std::array table{
        std::pair{AgentWorktreeState::open, QLatin1StringView("open")},
        std::pair{AgentWorktreeState::merged, QLatin1StringView("merged")},
        std::pair{AgentWorktreeState::discarded, QLatin1StringView("discarded")},
    };
};

struct AgentFileChange {
    /// From the top of the repository that holds the folder in which the agent worked; of a repository below that
    /// folder, from the folder.
    QString path;
    std::optional<QString> originalPath; ///< of a renamed file
    AgentFileChangeKind kind = AgentFileChangeKind::modified;
    int added = 0; ///< lines
    int removed = 0;
    bool isBinary = false; ///< or too large: its lines are not counted

    bool operator==(const AgentFileChange&) const = default;
};

struct AgentCommit {
    QString id; ///< the full hash
    QString subject;

    bool operator==(const AgentCommit&) const = default;
};

/// How the project's files were other after a run than before it, whoever did it.
struct AgentChanges {
    static constexpr qsizetype keptFiles = 1000;
    static constexpr qsizetype keptCommits = 100;

    QList<AgentFileChange> files; ///< the first of them, sorted by repository and path
    int fileCount = 0;            ///< of all
    int added = 0;                ///< lines, likewise
    int removed = 0;
    QList<AgentCommit> commits; ///< that HEAD got, newest first
    int dirtyBefore = 0;        ///< files that were other than committed when it began
    bool isDiffCut = false;     ///< the stored diff is not whole
    bool isShared = false;      ///< another run worked in the same folder at the time
    QString note;               ///< what could not be looked at, as sentences

    bool operator==(const AgentChanges&) const = default;
};

/// A git work tree that was made for a task, on a branch of its own.
struct AgentWorktree {
    QString repository; ///< the work tree from which it was made
    QString folder;
    QString branch;
    QString base;       ///< the commit at which it began
    QStringList copies; ///< untracked files that it was given, from its top
    AgentWorktreeState state = AgentWorktreeState::open;

    bool operator==(const AgentWorktree&) const = default;
};

/// What is kept of a run on disk, beside its output and the diff.
struct AgentRunRecord {
    QUuid id;
    AgentKind agent = AgentKind::claude;
    QString projectID;
    QString projectName;
    QString projectRoot; ///< where the agent works
    QString task;
    AgentAutonomy autonomy = AgentAutonomy::edit;
    std::optional<QUuid> linkedTaskID;
    std::optional<QUuid> parentID;
    QDateTime startedAt;
    std::optional<QDateTime> endedAt;
    AgentRunState state = AgentRunState::running;
    QString reason; ///< of a failed one
    std::optional<QString> sessionID;
    std::optional<QString> summary;
    QString lastWords; ///< the end of what it printed, of an agent that reports no summary
    std::optional<double> costUSD;
    std::optional<AgentTokens> tokens;
    std::optional<AgentChanges> changes; ///< once they are known
    std::optional<AgentWorktree> worktree;

    bool operator==(const AgentRunRecord&) const = default;
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Decoded<AgentRunRecord> fromJson(const QJsonObject& json);
};

} // namespace orv
