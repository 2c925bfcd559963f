#include "OrvUI/ProjectDetail.h"

#include "OrvCore/CommandBuilder.h"
#include "OrvCore/Paths.h"
#include "OrvUI/AgentRuns.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/DevicesModel.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/OrphanedWork.h"
#include "OrvUI/ProjectFiles.h"
#include "OrvUI/ServicePhase.h"
#include "OrvUI/ServiceTitle.h"
#include "OrvUI/Tile.h"

#include <QDir>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

QString iconOf(ServiceKind kind) {
    switch (kind) {
    case ServiceKind::frontend:
        return u"app-window"_s;
    case ServiceKind::backend:
        return u"server"_s;
    case ServiceKind::flutter:
        return u"smartphone"_s;
    case ServiceKind::docker:
        return u"container"_s;
    case ServiceKind::app:
        break;
    }
    return u"square-terminal"_s;
}

/// What runs in the target's folder, without the way there.
QString bodyOf(const ServiceTarget& target) {
    const QString way = u"cd "_s + CommandBuilder::quote(target.directory) + u" && "_s;
    return target.command.startsWith(way) ? target.command.sliced(way.size()) : target.command;
}

/// The state of several services as one: up when all are, left when all are up and some only that, under way when none
/// is idle.
QString together(const QStringList& states) {
    const auto isOneOf = [](const QStringList& wanted) {
        return [wanted](const QString& state) { return wanted.contains(state); };
    };
    if (std::ranges::all_of(states, isOneOf({u"running"_s}))) {
        return u"running"_s;
    }
    if (std::ranges::all_of(states, isOneOf({u"running"_s, u"orphaned"_s}))) {
        return u"orphaned"_s;
    }
    const QStringList active{u"running"_s, u"starting"_s, u"orphaned"_s};
    return std::ranges::all_of(states, isOneOf(active)) ? u"starting"_s : u"idle"_s;
}

} // namespace

const std::vector<RowRole<DetailServiceRow>>& DetailServiceRow::roles() {
    static const std::vector<RowRole<DetailServiceRow>> table{
        memberRole<&DetailServiceRow::key, DetailServiceRow>("key"),
        memberRole<&DetailServiceRow::icon, DetailServiceRow>("icon"),
        memberRole<&DetailServiceRow::label, DetailServiceRow>("label"),
        memberRole<&DetailServiceRow::framework, DetailServiceRow>("framework"),
        memberRole<&DetailServiceRow::folder, DetailServiceRow>("folder"),
        memberRole<&DetailServiceRow::command, DetailServiceRow>("command"),
        memberRole<&DetailServiceRow::state, DetailServiceRow>("serviceState"),
        memberRole<&DetailServiceRow::message, DetailServiceRow>("message"),
        memberRole<&DetailServiceRow::address, DetailServiceRow>("address"),
        memberRole<&DetailServiceRow::isPortListening, DetailServiceRow>("portListening"),
    };
    return table;
}

ProjectDetail::ProjectDetail(QObject* parent) : ModelPart(parent), m_files(std::make_unique<ProjectFiles>()) {}

ProjectDetail::~ProjectDetail() = default;

void ProjectDetail::takeModel() {
    for (const auto signal :
         {&AppModel::projectsChanged, &AppModel::pinsChanged, &AppModel::servicesChanged, &AppModel::setupChanged,
          &AppModel::tasksChanged, &AppModel::gitBadgesChanged}) {
        connect(m_model, signal, this, &ProjectDetail::updateSoon);
    }
    connect(m_model, &AppModel::addressChanged, this, &ProjectDetail::updateSoon);
    connect(m_model->orphans(), &OrphanedWork::changed, this, &ProjectDetail::updateSoon);
    connect(m_model->devices(), &DevicesModel::awaitedChanged, this, &ProjectDetail::updateSoon);
    // The page may have named the project before the model.
    m_files->setRoot(m_id, m_model->settings().settings().scanRoot);
    connect(m_model, &AppModel::refreshTokenChanged, this, [this] {
        if (m_files->wasRead()) {
            m_files->refresh();
        }
    });
    connect(&m_model->agentRunner(), &AgentRuns::runsChanged, this, &ProjectDetail::updateSoon);
    connect(&m_model->agentRunner(), &AgentRuns::runChanged, this, &ProjectDetail::updateSoon);
    update();
}

void ProjectDetail::setProjectID(const QString& id) {
    if (id != m_id) {
        m_id = id;
        m_files->setRoot(id, m_model ? m_model->settings().settings().scanRoot : QString());
        update();
    }
}

QString ProjectDetail::pathText() const {
    return Paths::shortened(m_id);
}

QUrl ProjectDetail::folderUrl() const {
    return QUrl::fromLocalFile(m_id);
}

int ProjectDetail::tileIndex() const {
    return Tile::index(m_name);
}

QString ProjectDetail::tileLetter() const {
    return Tile::letter(m_name);
}

void ProjectDetail::updateSoon() {
    if (!std::exchange(m_isUpdateDue, true)) {
        QMetaObject::invokeMethod(this, &ProjectDetail::update, Qt::QueuedConnection);
    }
}

QString ProjectDetail::state(const ServiceID& id) const {
    const ProcessManager& processes = m_model->processes();
    const ServiceState state = processes.state(id);
    if ((state.isActive() && processes.isStopping(id)) || m_model->orphans()->isEnding(id)) {
        return u"stopping"_s;
    }
    if (!state.isActive() && m_model->orphans()->holds(id)) {
        return u"orphaned"_s;
    }
    return state.phase == ServiceState::Phase::stopped ? u"idle"_s : rawValue(state.phase);
}

DetailServiceRow ProjectDetail::row(const ServiceTarget& target, const ServiceID& id) const {
    const ServiceState state = m_model->processes().state(id);
    const std::optional<int> port = state.isActive() ? m_model->addressPort(id) : std::nullopt;
    const QString folder = QDir(m_id).relativeFilePath(target.directory);
    return {
        .key = HomeModels::key(id),
        .icon = iconOf(target.kind),
        .label = serviceTitle(id, m_model->project(m_id)),
        .framework = target.framework.value_or(QString()),
        .folder = folder == u"." ? QString() : folder,
        .command = bodyOf(target),
        .state = this->state(id),
        .message = state.message,
        .address = port ? u"localhost:%1"_s.arg(*port) : QString(),
        .isPortListening = m_model->isAddressListening(id),
    };
}

void ProjectDetail::update() {
    m_isUpdateDue = false;
    const Project* project = m_model && !m_id.isEmpty() ? m_model->project(m_id) : nullptr;
    m_found = project != nullptr;
    if (!m_found) {
        m_services.setRows({});
        m_latestRuns.setRows({});
        Q_EMIT changed();
        return;
    }
    m_name = project->name;
    m_pinned = m_model->isPinned(*project);
    m_isFlutter = m_model->keeps(ProjectFilter::flutter, *project);
    const QList<ProjectTask> tasks = m_model->tasks(*project);
    m_openTaskCount =
        static_cast<int>(std::ranges::count_if(tasks, [](const ProjectTask& task) { return !task.isDone(); }));

    m_gitChanges = m_model->gitBadge(*project).value_or(GitBadge()).changes;

    m_frameworks.clear();
    m_runningCount = 0;
    m_leftCount = 0;
    QList<DetailServiceRow> rows;
    QHash<ServiceKind, QStringList> states;
    QList<ServiceTarget> targets = project->targets;
    std::ranges::stable_sort(targets, {}, &ServiceTarget::kind);
    for (const ServiceTarget& target : targets) {
        const DetailServiceRow service = row(target, ProcessManager::id(target, m_id));
        const QString framework = service.framework.isEmpty() ? service.label : service.framework;
        if (!m_frameworks.contains(framework)) {
            m_frameworks.append(framework);
        }
        m_runningCount += service.state == u"running" ? 1 : 0;
        m_leftCount += service.state == u"orphaned" ? 1 : 0;
        states[target.kind].append(service.state);
        rows.append(service);
    }
    // What was started and has since been taken out of the project still runs, or has something to say.
    for (const ServiceID& id : m_model->services(*project) + m_model->orphans()->services(m_id)) {
        const QString key = HomeModels::key(id);
        const bool isListed = std::ranges::find(rows, key, &DetailServiceRow::key) != rows.end();
        const bool isActive = m_model->processes().state(id).isActive() || m_model->orphans()->holds(id);
        if (!isListed && !AppModel::isInstall(id) && isActive) {
            rows.append(row({id.kind, id.directory, {}, {}, {}}, id));
        }
    }
    m_services.setRows(rows);
    m_busy = m_model->isInstalling(m_id) || m_model->devices()->isAwaited(m_id) ||
             !m_model->orphans()->services(m_id).isEmpty() ||
             std::ranges::any_of(rows, [](const DetailServiceRow& service) {
                 return service.state != u"idle" && service.state != u"failed";
             });

    QList<AgentRunRow> runs;
    for (const AgentRun* run : m_model->agentRuns()) {
        if (run->facts().projectID == m_id && runs.size() < latestRunLimit) {
            runs.append(AgentRunRow::of(*run));
        }
    }
    m_latestRuns.setRows(runs);

    m_actions.clear();
    for (const RunAction action : AppModel::availableActions(*project)) {
        QStringList parts;
        for (const ServiceKind kind : kinds(action)) {
            parts += states[kind];
        }
        m_actions.append(QVariantMap{{u"label"_s, rawValue(action)}, {u"state"_s, together(parts)}});
    }
    m_startable.clear();
    for (const RunAction action : m_model->startableActions(*project)) {
        m_startable.append(rawValue(action));
    }
    const std::optional<RunAction> preferred = m_model->offeredAction(*project);
    m_defaultAction = preferred ? rawValue(*preferred) : QString();
    Q_EMIT changed();
}

std::optional<ServiceID> ProjectDetail::service(const QString& key) const {
    const Project* project = m_model->project(m_id);
    if (project == nullptr) {
        return {};
    }
    QList<ServiceID> ids = m_model->services(*project) + m_model->orphans()->services(m_id);
    for (const ServiceTarget& target : project->targets) {
        ids.append(ProcessManager::id(target, m_id));
    }
    const auto found = std::ranges::find(ids, key, &HomeModels::key);
    return found == ids.end() ? std::nullopt : std::optional(*found);
}

void ProjectDetail::startService(const QString& key) {
    restartService(key);
}

void ProjectDetail::stopService(const QString& key) {
    if (const auto id = service(key)) {
        m_model->stopService(*id);
    }
}

void ProjectDetail::restartService(const QString& key) {
    if (const auto id = service(key)) {
        m_model->restart(*m_model->project(m_id), {*id});
    }
}

void ProjectDetail::stopAction(const QString& label) {
    const Project* project = m_model->project(m_id);
    const std::optional<RunAction> action = runAction(label);
    if (project == nullptr || !action) {
        return;
    }
    for (const ServiceID& id : m_model->services(*project) + m_model->orphans()->services(m_id)) {
        const bool isActive = m_model->processes().state(id).isActive() || m_model->orphans()->holds(id);
        if (kinds(*action).contains(id.kind) && isActive) {
            m_model->stopService(id);
        }
    }
}

} // namespace orv
