#include "OrvUI/QuitGuard.h"

#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AppModel.h"

#include <QStringList>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

RunningWork RunningWork::of(AppModel& model) {
    const auto isOurs = [](const AgentRun* run) { return run->isRunning() && run->owner() == AgentRun::Owner::here; };
    return {
        .services = static_cast<int>(std::ranges::count_if(model.processes().states(), &ServiceState::isActive)),
        .isProgramInTerminal = model.terminals().anyForegroundProgram(),
        .agents = static_cast<int>(std::ranges::count_if(model.agentRuns(), isOurs))};
}

QString RunningWork::message() const {
    QStringList parts;
    if (services > 0) {
        parts.append(
            QString::number(services) + (services == 1 ? u" service"_s : u" services"_s) + u" still running"_s);
    }
    if (isProgramInTerminal) {
        parts.append(u"a program is still running in a terminal"_s);
    }
    if (agents > 0) {
        parts.append(
            QString::number(agents) + (agents == 1 ? u" AI agent is"_s : u" AI agents are"_s) + u" still working"_s);
    }
    QString text = parts.join(u" and "_s);
    if (!text.isEmpty()) {
        text[0] = text[0].toUpper();
    }
    return text;
}

} // namespace orv
