#pragma once

#include "OrvCore/Settings.h"
#include "OrvUI/AgentRun.h"

#include <expected>

namespace orv {

/// Text to fill the agent composer with.
struct AgentDraft {
    /// How text was sent that came back, for nothing could be started with it.
    struct Sent {
        AgentKind agent = AgentKind::claude;
        AgentAutonomy autonomy = AgentAutonomy::edit;
        std::optional<QUuid> parentID; ///< the run that it goes on with

        bool operator==(const Sent&) const = default;
    };

    QString projectID;
    QString text;
    std::optional<QUuid> taskID;   ///< the to-do item that it came from
    std::optional<Sent> sent = {}; ///< absent of what was never sent

    bool operator==(const AgentDraft&) const = default;
};

/// What a background run is started with.
struct AgentPlan {
    QString task; ///< trimmed
    AgentAutonomy autonomy = AgentAutonomy::edit;
    QString command;

    bool operator==(const AgentPlan&) const = default;
};

namespace AgentPlanner {

/// Or why there is nothing to start, in words for the user. Without an autonomy the settings' one holds. A run that is
/// replied to gives its session.
[[nodiscard]] std::expected<AgentPlan, QString> plan(
    AgentKind kind, const QString& task, const std::optional<AgentAutonomy>& autonomy, const AppSettings& settings,
    const AgentRun* replyingTo);

/// The task that continues a run with a message: the message itself where the agent keeps sessions, else what went
/// before with it. Empty when the message is.
[[nodiscard]] QString followUp(const AgentRun& run, const QString& message);

/// Whether the agent asks something that nobody in the background can answer.
[[nodiscard]] bool asksForInput(const AgentLine& line);

[[nodiscard]] QString couldNotStart(AgentKind kind, const QString& reason);
/// The project was opened in the desktop agent, which can't be handed a task.
[[nodiscard]] QString openedInAntigravity(const QString& project);

} // namespace AgentPlanner
} // namespace orv
