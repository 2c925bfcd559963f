#pragma once

#include "OrvUI/AgentCatalog.h"
#include "OrvUI/AgentRun.h"
#include "OrvUI/RowModel.h"

#include <deque>

namespace orv {

/// A text of what is known of an agent or of a level of autonomy, in the language of the user.
[[nodiscard]] QString agentText(QStringView words);

// What one row of each list about agents shows. The names of the roles stand in AgentRows.cpp.

struct AgentRunRow {
    QString key;   ///< the run's id
    QString title; ///< the first line of what was asked
    QString asked; ///< its task; of one that goes on with another, the new words
    QString task;
    QString agentName;
    QString agentLetters;
    QString projectID;
    QString projectName;
    QString autonomyTitle; ///< empty where none of ours holds the agent
    QString state;         ///< "running", "succeeded", "stopped", "failed"
    QString reason;        ///< of a failed one
    QString answer;
    QString duration;  ///< "6 min"; of one that goes on, empty
    QString cost;      ///< "$0.42"; empty when none was reported
    QString tokens;    ///< "15k in · 204 out"
    QString changes;   ///< "3 files changed"; empty while nothing is known
    QString attention; ///< why someone should look at it, in words
    QString parentKey;
    QString branch; ///< of the work tree that it has to itself
    bool isWorktreeOpen = false;
    bool canContinue = false;
    bool canReview = false;
    bool isElsewhere = false; ///< another process runs it
    QDateTime startedAt;

    bool operator==(const AgentRunRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<AgentRunRow>>& roles();
    [[nodiscard]] static AgentRunRow of(const AgentRun& run);
};

struct AgentRow {
    QString key; ///< the kind's stored name
    QString name;
    QString letters;
    QString version;
    QString status; ///< "Installed · 2.1.4", "Not installed", "No command set"
    QString notice;
    QString installHint;
    QString action; ///< what the user can do about it: "signIn", "copyInstall", "setUp" or nothing
    bool isInstalled = false;
    bool isDefault = false;
    bool hasAutonomy = true;
    bool isMissing = false; ///< a run would not find it; false as long as nothing is known

    bool operator==(const AgentRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<AgentRow>>& roles();
    [[nodiscard]] static AgentRow of(AgentKind kind, const AgentCatalog& catalog, AgentKind defaultAgent);
};

struct AutonomyRow {
    QString key; ///< its stored name
    QString title;
    QString explanation;
    QString icon;
    bool isDefault = false;

    bool operator==(const AutonomyRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<AutonomyRow>>& roles();
};

struct AgentFileRow {
    QString key; ///< the path
    QString originalPath;
    QString kind; ///< "modified", "added", "deleted", "renamed"
    int added = 0;
    int removed = 0;
    bool isBinary = false;

    bool operator==(const AgentFileRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<AgentFileRow>>& roles();
};

struct AgentEventRow {
    QString kind; ///< "text", "tool", "result"
    QString icon; ///< the name of a picture
    QString name; ///< of the tool
    QString text; ///< prose, what the tool acted on, or the summary
    bool isSuccess = true;

    bool operator==(const AgentEventRow&) const = default;
    [[nodiscard]] static AgentEventRow of(const AgentEvent& event);
};

/// The events of one run, oldest first, as far as the run keeps them. Follows the run, which it belongs to. An agent
/// writes its whole plan anew with each step of it: as long as nothing else comes between, that is one row.
class AgentEventsModel final : public QAbstractListModel {
    Q_OBJECT
public:
    explicit AgentEventsModel(AgentRun* run);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    /// The role "isCurrent" is that of the newest event of a run that goes on.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    enum Role { kindRole = Qt::UserRole, iconRole, nameRole, textRole, successRole, currentRole };

    struct Shown {
        AgentEventRow row;
        qsizetype events = 1; ///< that it stands for
    };

    void follow(qsizetype added, qsizetype dropped);
    void drop(qsizetype events);
    void updateCurrent();

    AgentRun& m_run;
    std::deque<Shown> m_rows;
    int m_current = -1; ///< the row that was last told to be the current one
};

/// "40 s", "6 min", "1 h 5 min"
[[nodiscard]] QString agentDurationText(const AgentRun& run, const QDateTime& now);
[[nodiscard]] QString agentCostText(double costUSD);
[[nodiscard]] QString agentTokensText(const AgentTokens& tokens);
/// "3 files changed"
[[nodiscard]] QString agentChangesText(const AgentChanges& changes);

} // namespace orv
