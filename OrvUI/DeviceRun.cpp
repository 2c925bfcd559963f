#include "OrvUI/DeviceRun.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/DevicesModel.h"

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
    if (remembers) {
        if (const StoreResult stored = devices.choose(projectID, key); !stored) {
            m_model->report(stored.error().text(), true);
        }
        m_model->runAction(projectID, rawValue(RunAction::flutter));
    } else if (const Project* project = m_model->project(projectID)) {
        m_model->run(*project, kinds(RunAction::flutter), key);
    }
}

} // namespace orv
