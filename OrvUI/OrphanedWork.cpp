#include "OrvUI/OrphanedWork.h"

#include "OrvCore/Async.h"
#include "OrvProcess/ChildRecords.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Pool_p.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

bool isService(const ChildRecord& child, const ServiceID& id) {
    return child.kind == id.kind && child.projectID == id.projectID && child.directory == id.directory;
}

ServiceID serviceOf(const ChildRecord& child) {
    return {child.projectID, *child.kind, child.directory};
}

bool isOf(const ChildRecord& child, const QString& projectID) {
    return AppModel::projectID({child.projectID, {}, {}}) == projectID;
}

} // namespace

OrphanedWork::OrphanedWork(AppModel& model) : m_model(model) {}

OrphanedWork::Found OrphanedWork::find(const ChildRecords& records) {
    QList<ChildRecord> children = records.orphans();
    auto exits = children.isEmpty() ? nullptr : std::make_shared<ExitWatch>(ChildRecords::watch(children));
    return {std::move(children), std::move(exits)};
}

QFuture<void> OrphanedWork::look() {
    ORV_ASSERT_MAIN_THREAD();
    const Completion completion;
    const auto search = [records = m_model.processes().records()] { return find(records); };
    onFinished(runIn(m_model.workPool(), search), this, [this, completion](const Found& found) {
        takeIn(found);
        completion.finish();
    });
    return completion.future();
}

void OrphanedWork::lookAgain() {
    if (!m_all.isEmpty()) {
        look();
    }
}

void OrphanedWork::takeIn(const Found& found) {
    ORV_ASSERT_MAIN_THREAD();
    follow(found.exits);
    QList<ChildRecord> all = found.children;
    // Whoever waits for an end waits for more than the processes: a stack has to be down.
    for (const ChildRecord& child : std::as_const(m_all)) {
        if (m_ends.contains(child.leader.pid) && !all.contains(child)) {
            all.append(child);
        }
    }
    const auto wasKnown = [this](const ChildRecord& child) { return m_all.contains(child); };
    if (all.size() == m_all.size() && std::ranges::all_of(all, wasKnown)) {
        return;
    }
    m_isDismissed = m_isDismissed && std::ranges::all_of(all, wasKnown);
    m_all = all;
    Q_EMIT changed();
}

void OrphanedWork::follow(const std::shared_ptr<ExitWatch>& exits) {
    m_exitNotifier.reset();
    m_exits = exits;
    if (m_exits) {
        m_exitNotifier = std::make_unique<QSocketNotifier>(m_exits->descriptor(), QSocketNotifier::Read);
        connect(m_exitNotifier.get(), &QSocketNotifier::activated, this, [this] {
            m_exitNotifier->setEnabled(false);
            look();
        });
    }
}

QString OrphanedWork::text() const {
    if (m_isDismissed || m_all.isEmpty()) {
        return {};
    }
    if (isStopping()) {
        return tr("Stopping what is left from last time…");
    }
    const auto agents = std::ranges::count_if(m_all, [](const ChildRecord& child) { return !child.kind; });
    const auto services = m_all.size() - agents;
    const QString someServices = services == 1 ? tr("1 service") : tr("%1 services").arg(services);
    const QString someAgents = agents == 1 ? tr("1 AI agent") : tr("%1 AI agents").arg(agents);
    const QString those = agents == 0     ? someServices
                          : services == 0 ? someAgents
                                          : tr("%1 and %2").arg(someServices, someAgents);
    return (m_all.size() == 1 ? tr("%1 from last time is still running.") : tr("%1 from last time are still running."))
        .arg(those);
}

bool OrphanedWork::isStopping() const {
    return !m_all.isEmpty() &&
           std::ranges::all_of(m_all, [this](const ChildRecord& child) { return m_ends.contains(child.leader.pid); });
}

QList<ServiceID> OrphanedWork::services() const {
    QList<ServiceID> found;
    for (const ChildRecord& child : m_all) {
        if (child.kind && !AppModel::isInstall(serviceOf(child))) {
            found.append(serviceOf(child));
        }
    }
    return found;
}

QList<ServiceID> OrphanedWork::services(const QString& projectID) const {
    QList<ServiceID> found;
    for (const ChildRecord& child : m_all) {
        if (child.kind && isOf(child, projectID)) {
            found.append(serviceOf(child));
        }
    }
    return found;
}

QString OrphanedWork::state(const ServiceID& id) const {
    return !holds(id) ? QString() : isEnding(id) ? u"stopping"_s : u"orphaned"_s;
}

bool OrphanedWork::holds(const ServiceID& id) const {
    return std::ranges::any_of(m_all, [&id](const ChildRecord& child) { return isService(child, id); });
}

bool OrphanedWork::isEnding(const ServiceID& id) const {
    return std::ranges::any_of(
        m_all, [&](const ChildRecord& child) { return isService(child, id) && m_ends.contains(child.leader.pid); });
}

void OrphanedWork::stop() {
    stopThose([](const ChildRecord&) { return true; });
}

void OrphanedWork::stopServices() {
    stopThose([](const ChildRecord& child) { return child.kind.has_value(); });
}

QFuture<void> OrphanedWork::stop(const ServiceID& id) {
    return stopThose([&id](const ChildRecord& child) { return isService(child, id); });
}

QFuture<void> OrphanedWork::stopServices(const QString& projectID) {
    return stopThose([&projectID](const ChildRecord& child) { return child.kind && isOf(child, projectID); });
}

bool OrphanedWork::holdsFolder(const ChildRecord& child) const {
    const Project* project = child.kind ? nullptr : m_model.project(child.projectID);
    return project != nullptr && child.directory == project->root;
}

QStringList OrphanedWork::agentProjects() const {
    QStringList found;
    for (const ChildRecord& child : m_all) {
        if (holdsFolder(child) && !m_ends.contains(child.leader.pid)) {
            found.append(child.projectID);
        }
    }
    return found;
}

void OrphanedWork::stopAgentsOf(const QString& projectID) {
    stopThose([&](const ChildRecord& child) { return child.projectID == projectID && holdsFolder(child); });
}

QFuture<void> OrphanedWork::stopRun(const QUuid& run) {
    const Completion completion;
    onFinished(look(), this, [this, run, completion] {
        const QFuture<void> ends = stopThose([&run](const ChildRecord& child) { return child.run == run; });
        onFinished(ends, this, [completion] { completion.finish(); });
    });
    return completion.future();
}

QFuture<void> OrphanedWork::ends() {
    return whenAll(m_ends.values(), this);
}

void OrphanedWork::dismiss() {
    ORV_ASSERT_MAIN_THREAD();
    m_isDismissed = true;
    Q_EMIT changed();
}

QFuture<void> OrphanedWork::stopThose(const std::function<bool(const ChildRecord&)>& isMeant) {
    ORV_ASSERT_MAIN_THREAD();
    QList<QFuture<void>> ends;
    for (const ChildRecord& child : std::as_const(m_all)) {
        if (!isMeant(child)) {
            continue;
        }
        if (!m_ends.contains(child.leader.pid)) {
            const QFuture<void> end = m_model.processes().endOrphan(child);
            m_ends.insert(child.leader.pid, end);
            onFinished(end, this, [this, child] { ended(child); });
        }
        ends.append(m_ends.value(child.leader.pid));
    }
    if (!ends.isEmpty()) {
        Q_EMIT changed();
    }
    return whenAll(ends, this);
}

void OrphanedWork::ended(const ChildRecord& child) {
    m_ends.remove(child.leader.pid);
    if (ChildRecords::isAlive(child)) {
        m_model.report(
            tr("What was left of %1 can't be stopped.").arg(m_model.projectName({child.projectID, {}, {}})), true);
    } else {
        m_all.removeOne(child);
    }
    Q_EMIT changed();
}

} // namespace orv
