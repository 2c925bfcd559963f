#include "OrvCore/Async.h"
#include "OrvUI/AppModel_p.h"

#include <QTimer>

#include <algorithm>

namespace orv {
namespace {

/// One that comes up, is installed to be run, waits for its device, or still runs from last time counts: toggling stops
/// it.
bool isUp(const AppModel& model, const ProcessManager& processes, const Project& project) {
    return model.isInstalling(project.id) || model.devices()->isAwaited(project.id) ||
           !model.orphans()->services(project.id).isEmpty() ||
           std::ranges::any_of(
               model.services(project), [&](const ServiceID& id) { return processes.state(id).isActive(); });
}

} // namespace

bool AppModel::isPinned(const Project& project) const {
    return d->settings->settings().pinnedProjectIDs.contains(project.id);
}

QList<Project> AppModel::pinnedProjects() const {
    QList<Project> found;
    for (const QString& id : d->settings->settings().pinnedProjectIDs) {
        if (const Project* pinned = project(id)) {
            found.append(*pinned);
        }
    }
    return found;
}

void AppModel::togglePin(const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    // Decided here, not in the change: that one may run again on what another process wrote.
    const QStringList before = d->settings->settings().pinnedProjectIDs;
    const bool isToBePinned = !before.contains(project.id);
    changeSettings([id = project.id, isToBePinned](AppSettings& settings) {
        if (!isToBePinned) {
            settings.pinnedProjectIDs.removeAll(id);
        } else if (!settings.pinnedProjectIDs.contains(id)) {
            settings.pinnedProjectIDs.append(id);
        }
    });
    if (isToBePinned) {
        return;
    }
    d->undo.offer(tr("Unpinned %1.").arg(project.name), [this, id = project.id, before] {
        changeSettings([id, before](AppSettings& settings) {
            QStringList& pins = settings.pinnedProjectIDs;
            if (pins.contains(id)) {
                return;
            }
            // In front of the first that stood behind it, and is still there.
            const auto isBehind = [&](const QString& other) { return before.indexOf(other) > before.indexOf(id); };
            pins.insert(std::ranges::find_if(pins, isBehind) - pins.begin(), id);
        });
    });
}

QString AppModel::undoText() const {
    return d->undo.text();
}

void AppModel::undo() {
    d->undo.accept();
}

void AppModel::dismissUndo() {
    d->undo.withdraw();
}

std::optional<RunAction> AppModel::primaryAction(const Project& project) const {
    const std::optional<LastRun>& lastRun = d->settings->settings().lastRun;
    std::optional<QString> last = d->choices.of(project.id).action;
    if (!last && lastRun && lastRun->projectID == project.id) {
        last = lastRun->action;
    }
    return CardPrimaryAction::defaultAction(availableActions(project), last);
}

std::optional<RunAction> AppModel::offeredAction(const Project& project) const {
    const QList<RunAction> startable = startableActions(project);
    const std::optional<RunAction> primary = primaryAction(project);
    return startable.isEmpty() || (primary && startable.contains(*primary)) ? primary : preferred(startable);
}

QFuture<void> AppModel::toggleRun(const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    if (isUp(*this, *d->processes, project)) {
        return stop(project);
    }
    const std::optional<RunAction> action = primaryAction(project);
    return action ? run(project, kinds(*action)) : finishedFuture();
}

QList<PinnedEntry> AppModel::pinnedEntries() const {
    return PinnedMenu::entries(
        pinnedProjects(), [this](const Project& project) { return isUp(*this, *d->processes, project); });
}

QList<int> AppModel::runningPorts(const Project& project) const {
    QList<int> ports;
    for (const ServiceID& id : services(project)) {
        const std::optional<int> port = addressPort(id);
        if (port && !isInstall(id) && d->processes->state(id).isRunning() && !ports.contains(*port)) {
            ports.append(*port);
        }
    }
    std::ranges::sort(ports);
    return ports;
}

void AppModel::report(const QString& text, bool isError) {
    ORV_ASSERT_MAIN_THREAD();
    const StatusMessage message{.text = text, .isError = isError};
    setStatusMessage(message);
    QTimer::singleShot(d->reportTime, this, [this, id = message.id] {
        if (d->statusMessage && d->statusMessage->id == id) {
            setStatusMessage({});
        }
    });
}

void AppModel::refuse(const QString& text) {
    report(text, true);
    showMainWindow();
}

void AppModel::dismissStatusMessage() {
    ORV_ASSERT_MAIN_THREAD();
    setStatusMessage({});
}

} // namespace orv
