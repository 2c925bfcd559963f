#pragma once

#include "OrvCore/Agents.h"

#include <QString>

#include <optional>

namespace orv {

/// The shell lines that hand a task to an agent. Pure; POSIX shell text.
namespace AgentCommandBuilder {

/// The environment variable that carries the task of a background run. The line expands it in double quotes, so that
/// the task needs no quoting, whatever stands in it.
inline constexpr QLatin1StringView taskVariable("ORV_TASK");

/// The line of a background run, to be started with the task in `taskVariable`. `customTemplate` is for a custom agent
/// alone; without one there is no line. `resumeSessionID` is for agents that keep sessions.
[[nodiscard]] std::optional<QString> command(
    AgentKind kind, AgentAutonomy autonomy, const std::optional<QString>& customTemplate,
    const std::optional<QString>& resumeSessionID);

/// The line to type into a terminal (without the line feed), the task inline; none for a custom agent. It has no flags
/// of autonomy: there the agent asks the user. It is to be pasted: a line editor would act on tabs in the task.
[[nodiscard]] std::optional<QString> interactiveCommand(AgentKind kind, const QString& task);

/// Of a follow-up, in UTF-8: Linux gives no program a variable of more than 128 KiB.
inline constexpr qsizetype longestFollowUpBytes = 96 * 1024;
/// The task of a run that continues an earlier one of an agent that keeps no sessions. What would make it longer than
/// `longestFollowUpBytes` is cut from the beginning of the previous task, where the oldest stands, and a sentence says
/// so.
[[nodiscard]] QString followUpTask(const QString& previousTask, const QString& previousAnswer, const QString& message);
/// The message in such a task, as far as it can be told; any other task itself.
[[nodiscard]] QString followUpMessage(const QString& task);

} // namespace AgentCommandBuilder
} // namespace orv
