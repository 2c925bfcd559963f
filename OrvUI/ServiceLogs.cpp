#include "OrvUI/ServiceLogs.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/ServicePhase.h"
#include "OrvUI/ServiceTitle.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

const std::vector<RowRole<LogServiceRow>>& LogServiceRow::roles() {
    static const std::vector<RowRole<LogServiceRow>> table{
        memberRole<&LogServiceRow::key, LogServiceRow>("key"),
        memberRole<&LogServiceRow::label, LogServiceRow>("label"),
        memberRole<&LogServiceRow::phase, LogServiceRow>("phase"),
        memberRole<&LogServiceRow::port, LogServiceRow>("port"),
        memberRole<&LogServiceRow::isShown, LogServiceRow>("isShown"),
    };
    return table;
}

ServiceLogs::ServiceLogs(AppModel& model, QObject* parent)
    : QObject(parent), m_model(model), m_updateSoon(this, [this] { update(); }) {
    ProcessManager& processes = model.processes();
    connect(&processes, &ProcessManager::logReset, this, [this](const ServiceID& id) {
        m_before.remove(id);
        m_cleared.remove(id);
        if (id == m_shown) {
            m_lines.setLog(&m_model.processes().log(id));
        }
    });
    connect(&processes, &ProcessManager::linesSkipped, this, [this](const ServiceID& id, qsizetype count) {
        m_before[id] += count;
        if (m_cleared.contains(id)) {
            m_cleared[id] += count;
        }
        if (id == m_shown) {
            m_lines.noteSkipped(count);
        }
    });
    connect(&processes, &ProcessManager::logAppended, this, [this](const ServiceID& id, qsizetype, qsizetype dropped) {
        if (dropped > 0) {
            m_before[id] += dropped;
        }
        if (id == m_shown) {
            m_lines.noteAppended(dropped);
        }
    });
    for (const auto signal : {&AppModel::servicesChanged, &AppModel::projectsChanged}) {
        connect(&model, signal, this, [this] { m_updateSoon(); });
    }
}

QString ServiceLogs::shownKey() const {
    return m_shown ? HomeModels::key(*m_shown) : QString();
}

QStringList ServiceLogs::folders() const {
    QStringList found{m_projectID};
    if (m_shown && m_shown->directory != m_projectID) {
        found.prepend(m_shown->directory);
    }
    return found;
}

void ServiceLogs::setProjectID(const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    if (projectID == m_projectID) {
        return;
    }
    m_projectID = projectID;
    m_isChosen = false;
    show(std::nullopt);
    update();
    Q_EMIT projectIDChanged();
}

void ServiceLogs::update() {
    const Project* project = m_model.project(m_projectID);
    QList<ServiceID> ids = project != nullptr ? m_model.services(*project) : QList<ServiceID>();
    std::ranges::stable_sort(ids, {}, &ServiceID::kind);
    const auto hasFailed = [this](const ServiceID& id) {
        return m_model.processes().state(id).phase == ServiceState::Phase::failed;
    };
    // From an install that is over to what it was for, unless someone wants to read it.
    const bool isOver = m_shown && AppModel::isInstall(*m_shown) && !m_model.processes().state(*m_shown).isActive();
    const auto chosen = std::ranges::find(ids, m_chosenKey, &HomeModels::key);
    const bool isOther = chosen != ids.end() && m_shown != *chosen;
    if ((!m_shown || (!m_isChosen && (isOver || isOther))) && !ids.isEmpty()) {
        const auto failed = std::ranges::find_if(ids, hasFailed);
        show(failed != ids.end() ? *failed : chosen != ids.end() ? *chosen : ids.first());
    }
    QList<LogServiceRow> rows;
    for (const ServiceID& id : ids) {
        const std::optional<int> port = m_model.addressPort(id);
        rows.append(
            {HomeModels::key(id),
             AppModel::isInstall(id) ? tr("%1 setup").arg(serviceTitle(id, project)) : serviceTitle(id, project),
             rawValue(m_model.processes().state(id).phase), port ? u":%1"_s.arg(*port) : QString(), id == m_shown});
    }
    m_services.setRows(rows);
}

void ServiceLogs::show(const QString& key) {
    ORV_ASSERT_MAIN_THREAD();
    const auto& states = m_model.processes().states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        if (HomeModels::key(entry.key()) == key) {
            m_isChosen = true;
            m_chosenKey = key;
            Q_EMIT chosenKeyChanged();
            show(entry.key());
            update();
            return;
        }
    }
}

void ServiceLogs::show(const std::optional<ServiceID>& id) {
    if (id == m_shown) {
        return;
    }
    if (m_shown) {
        m_cleared[*m_shown] = m_lines.clearedLines();
    }
    m_shown = id;
    m_lines.setLog(
        id ? &m_model.processes().log(*id) : nullptr, id ? m_before.value(*id) : 0, id ? m_cleared.value(*id) : 0);
    Q_EMIT shownChanged();
}

} // namespace orv
