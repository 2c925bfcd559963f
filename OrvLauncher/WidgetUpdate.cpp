#include "WidgetUpdate.h"

#include "OrvCore/Settings.h"
#include "OrvCore/WidgetChange.h"
#include "SingleInstance.h"

#include <QFileInfo>

namespace orv {

WidgetUpdate::~WidgetUpdate() {
    if (!m_running.isEmpty()) {
        write({});
    }
}

void WidgetUpdate::write(const QList<WidgetSnapshot::Running>& running) {
    if (SingleInstance::isRunning()) {
        m_running.clear(); // the window writes without them
        return;
    }
    const SettingsStore settings;
    SharedContainer::change(SharedContainer::defaultDirectory(), [&](WidgetSnapshot& snapshot) {
        for (const WidgetSnapshot::Running& gone : std::as_const(m_running)) {
            snapshot.running.removeOne(gone);
        }
        snapshot.running += running;
        snapshot.pinned.clear();
        for (const QString& id : settings.settings().pinnedProjectIDs) {
            if (const QFileInfo folder(id); folder.isDir()) {
                snapshot.pinned.append({id, folder.fileName()});
            }
        }
        takeTasks(snapshot, TaskStore());
    });
    m_running = running;
}

} // namespace orv
