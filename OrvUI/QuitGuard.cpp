#include "OrvUI/QuitGuard.h"

#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/NewProject.h"
#include "OrvUI/OrphanedWork.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>

namespace orv {
namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(QuitGuard)
};

} // namespace

RunningWork RunningWork::of(AppModel& model) {
    const auto isOurs = [](const AgentRun* run) { return run->isRunning() && run->owner() == AgentRun::Owner::here; };
    int services = 0;
    bool isInstalling = false;
    const auto& states = model.processes().states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        const bool isInstall = AppModel::isInstall(entry.key());
        services += entry->isActive() && !isInstall ? 1 : 0;
        isInstalling = isInstalling || (entry->isActive() && isInstall);
    }
    // They are shown as running, and quitting ends them, too.
    int agents = static_cast<int>(std::ranges::count_if(model.agentRuns(), isOurs));
    for (const ChildRecord& child : model.orphans()->all()) {
        const bool isInstall = child.kind && AppModel::isInstall({child.projectID, *child.kind, child.directory});
        agents += child.kind ? 0 : 1;
        services += child.kind && !isInstall ? 1 : 0;
        isInstalling = isInstalling || isInstall;
    }
    return {
        .services = services,
        .isInstalling = isInstalling,
        .isMakingProject = model.newProject()->isBusy(),
        .isProgramInTerminal = model.terminals().anyForegroundProgram(),
        .agents = agents};
}

QString RunningWork::message() const {
    QStringList parts;
    if (services > 0) {
        parts.append(
            services == 1 ? Words::tr("1 service still running")
                          : Words::tr("%1 services still running").arg(services));
    }
    if (isInstalling) {
        parts.append(Words::tr("an install is still running"));
    }
    if (isMakingProject) {
        parts.append(Words::tr("a project is still being added"));
    }
    if (isProgramInTerminal) {
        parts.append(Words::tr("a program is still running in a terminal"));
    }
    if (agents > 0) {
        parts.append(
            agents == 1 ? Words::tr("1 AI agent is still working")
                        : Words::tr("%1 AI agents are still working").arg(agents));
    }
    QString text = parts.join(Words::tr(" and "));
    if (!text.isEmpty()) {
        text[0] = text[0].toUpper();
    }
    return text;
}

} // namespace orv
