#include "OrvUI/AgentPlan.h"

#include "OrvCore/AgentCommandBuilder.h"
#include "OrvUI/AgentRows.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(AgentPlanner)
};

} // namespace

std::expected<AgentPlan, QString> AgentPlanner::plan(
    AgentKind kind, const QString& task, const std::optional<AgentAutonomy>& autonomy, const AppSettings& settings,
    const AgentRun* replyingTo) {
    AgentPlan plan{.task = task.trimmed(), .autonomy = autonomy.value_or(settings.agentAutonomy), .command = {}};
    if (plan.task.isEmpty()) {
        return std::unexpected(Words::tr("Describe the task first."));
    }
    const auto session = replyingTo != nullptr ? replyingTo->sessionID() : std::nullopt;
    const auto command = AgentCommandBuilder::command(kind, plan.autonomy, settings.customAgentCommand, session);
    if (!command) {
        return std::unexpected(Words::tr("Set the custom agent's command in Settings \u2192 AI first."));
    }
    plan.command = *command;
    return plan;
}

QString AgentPlanner::followUp(const AgentRun& run, const QString& message) {
    QString text = message.trimmed();
    const AgentRun::Facts& facts = run.facts();
    if (text.isEmpty() || agentInfo(facts.agent).keepsSessions) {
        return text;
    }
    return AgentCommandBuilder::followUpTask(facts.task, run.lastWords(), text);
}

bool AgentPlanner::asksForInput(const AgentLine& line) {
    // What it sends to a host that would answer; and the tools with which it turns to its user.
    if (line.type == u"control_request") {
        return true;
    }
    const auto* tool = line.events.isEmpty() ? nullptr : std::get_if<AgentTool>(&line.events.constLast());
    return tool != nullptr && (tool->name == u"AskUserQuestion" || tool->name == u"ExitPlanMode");
}

QString AgentPlanner::couldNotStart(AgentKind kind, const QString& reason) {
    return Words::tr("Couldn't start %1: %2").arg(agentText(agentInfo(kind).displayName), reason);
}

QString AgentPlanner::openedInAntigravity(const QString& project) {
    return Words::tr("Opened %1 in Antigravity. The task is on your clipboard \u2014 paste it into the Agent Manager.")
        .arg(project);
}

} // namespace orv
