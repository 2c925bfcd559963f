#include "OrvUI/DeviceRun.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/DevicesModel.h"

#include <algorithm>

namespace orv {

AppModel* DeviceRun::model() const {
    return m_model;
}

void DeviceRun::setModel(AppModel* model) {
    if (model != m_model) {
        m_model = model;
        Q_EMIT modelChanged();
    }
}

void DeviceRun::start(const QString& key, bool remembers) {
    ORV_ASSERT_MAIN_THREAD();
    DevicesModel& devices = *m_model->devices();
    const QString projectID = devices.projectID();
    devices.endAsking();
    if (!remembers) {
        startOnce(projectID, key);
        return;
    }
    if (const StoreResult stored = devices.choose(projectID, key); !stored) {
        m_model->report(stored.error().text(), true);
    }
    m_model->runAction(projectID, rawValue(RunAction::flutter));
}

/// Which may have to be booted first; that takes its time, and says so.
void DeviceRun::startOnce(const QString& projectID, const QString& key) {
    const auto& rows = m_model->devices()->rows();
    const auto row = std::ranges::find(rows, key, &DeviceRow::key);
    const StatusMessage starting{
        .text = tr("Getting %1 ready…").arg(row != rows.end() ? row->title : key), .isOngoing = true};
    const QFuture<DeviceTools::Booted> ready = m_model->devices()->ready(key);
    if (!ready.isFinished()) {
        m_model->setStatusMessage(starting);
    }
    onFinished(ready, this, [this, projectID, id = starting.id](const DeviceTools::Booted& device) {
        if (m_model->statusMessage() && m_model->statusMessage()->id == id) {
            m_model->dismissStatusMessage();
        }
        const Project* project = m_model->project(projectID);
        if (!device) {
            m_model->report(device.error(), true);
        } else if (project != nullptr) {
            m_model->run(*project, kinds(RunAction::flutter), *device);
        }
    });
}

} // namespace orv
