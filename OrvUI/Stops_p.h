#pragma once

#include "OrvProcess/ProcessManager.h"

#include <QHash>

#include <algorithm>

namespace orv {

/// Remembers which stops were asked for and in which order, so that what was being prepared meanwhile can be told that
/// it is off.
class Stops {
public:
    /// Between two stops.
    using Moment = qint64;

    [[nodiscard]] Moment now() const { return m_now; }
    void noteAll() { m_everything = ++m_now; }
    void noteProject(const QString& projectID) { m_projects[projectID] = ++m_now; }
    void noteService(const ServiceID& id) { m_services[id] = ++m_now; }

    /// Whether a stop of the whole project, or of everything, came after that moment.
    [[nodiscard]] bool isOff(const QString& projectID, Moment since) const {
        return std::max(m_everything, m_projects.value(projectID)) > since;
    }
    /// The same, or one of this service alone.
    [[nodiscard]] bool isOff(const ServiceID& id, Moment since) const {
        return isOff(id.projectID, since) || m_services.value(id) > since;
    }

private:
    Moment m_now = 0;
    Moment m_everything = 0;
    QHash<QString, Moment> m_projects;
    QHash<ServiceID, Moment> m_services;
};

} // namespace orv
