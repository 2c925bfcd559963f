#include "OrvCore/Async.h"
#include "OrvUI/AppModel_p.h"

#include <QTimer>

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
