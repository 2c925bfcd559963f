#include "OrvCore/Async.h"
#include "OrvUI/AppModel_p.h"

#include <QTimer>

#include <algorithm>

namespace orv {

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
    const bool isToBePinned = !isPinned(project);
    changeSettings([id = project.id, isToBePinned](AppSettings& settings) {
        if (!isToBePinned) {
            settings.pinnedProjectIDs.removeAll(id);
        } else if (!settings.pinnedProjectIDs.contains(id)) {
            settings.pinnedProjectIDs.append(id);
        }
    });
}

std::optional<RunAction> AppModel::primaryAction(const Project& project) const {
    const std::optional<LastRun>& lastRun = d->settings->settings().lastRun;
    std::optional<QString> last = d->choices.of(project.id).action;
    if (!last && lastRun && lastRun->projectID == project.id) {
        last = lastRun->action;
    }
    return CardPrimaryAction::defaultAction(availableActions(project), last);
}

QList<PinnedEntry> AppModel::pinnedEntries() const {
    return PinnedMenu::entries(pinnedProjects(), [this](const Project& project) { return isRunning(project); });
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

void AppModel::dismissStatusMessage() {
    ORV_ASSERT_MAIN_THREAD();
    setStatusMessage({});
}

} // namespace orv
