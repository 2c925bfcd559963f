#include "OrvUI/HomeModels.h"

#include "OrvUI/AppModel.h"
#include "OrvUI/DevicesModel.h"
#include "OrvUI/OrphanedWork.h"
#include "OrvUI/ServicePhase.h"
#include "OrvUI/ServiceTitle.h"
#include "OrvUI/Tile.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

QString counted(qsizetype count, const QString& one, const QString& many) {
    return count == 1 ? one : many.arg(count);
}

} // namespace

/// What a project does, as its card says it.
struct HomeModels::Activity {
    QString state = u"idle"_s;
    QString message; ///< of the first service that failed
    QVariantList services;
    QVariantList failedServices;
};

HomeModels::HomeModels(AppModel& model) : m_model(model) {
    for (const auto signal :
         {&AppModel::projectsChanged, &AppModel::treeChanged, &AppModel::hasScannedChanged,
          &AppModel::searchTextChanged, &AppModel::filterChanged, &AppModel::pinsChanged, &AppModel::servicesChanged,
          &AppModel::setupChanged, &AppModel::tasksChanged, &AppModel::preferencesChanged, &AppModel::gitBadgesChanged,
          &AppModel::gitBusyChanged, &AppModel::filtersChanged, &AppModel::showOnlyUncommittedChanged}) {
        connect(&model, signal, this, &HomeModels::updateSoon);
    }
    connect(model.devices(), &DevicesModel::awaitedChanged, this, &HomeModels::updateSoon);
    update();
}

void HomeModels::updateSoon() {
    if (!std::exchange(m_isUpdateDue, true)) {
        QMetaObject::invokeMethod(this, &HomeModels::update, Qt::QueuedConnection);
    }
}

void HomeModels::update() {
    m_isUpdateDue = false;
    const int shownBefore = m_shownCount;
    m_startedProjects.clear();
    const auto& states = m_model.processes().states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        m_startedProjects.insert(AppModel::projectID(entry.key()));
    }

    QList<CardRow> cardRows;
    for (const Project& project : m_model.filteredProjects()) {
        cardRows.append(card(project));
    }
    cards.setRows(cardRows);
    Shown shown;
    for (const CardRow& row : std::as_const(cardRows)) {
        shown.insert(row.key, row);
    }
    QList<CardRow> homeRows;
    addHomeCards(m_model.tree(), shown, homeRows);
    homeCards.setRows(homeRows);
    QList<CardRow> treeRows;
    if (m_model.settings().settings().viewMode == ViewMode::folders) {
        addFolderRows(m_model.tree(), 0, shown, treeRows);
    }
    folderRows.setRows(treeRows);
    m_shownCount = countShown(shown);

    QList<PinnedRow> pinnedRows;
    for (const Project& project : m_model.pinnedProjects()) {
        pinnedRows.append(
            {project.id, project.name, Tile::index(project.name), Tile::letter(project.name), activity(project).state});
    }
    pinned.setRows(pinnedRows);

    outline.setTree(m_model.tree(), [this](const Project& project) {
        return OutlineModel::Activity{activity(project).state, m_model.gitBadge(project).value_or(GitBadge()).changes};
    });

    QList<FilterRow> filterRows;
    for (const ProjectFilter filter : allProjectFilters) {
        const auto kept = std::ranges::count_if(
            m_model.projects(), [&](const Project& project) { return m_model.keeps(filter, project); });
        filterRows.append({title(filter), icon(filter), static_cast<int>(kept)});
    }
    sidebarFilters.setRows(filterRows);

    QList<SetupStepRow> stepRows;
    if (m_model.setup()) {
        for (const SetupStep& step : m_model.setup()->steps) {
            stepRows.append({QString::number(stepRows.size()), step.title, step.command, rawValue(step.status)});
        }
    }
    setupSteps.setRows(stepRows);

    updateRunning();
    updateSummary(shownBefore);
    Q_EMIT updated();
}

void HomeModels::updateRunning() {
    QList<RunningRow> rows;
    QList<ServiceID> ids;
    const auto& states = m_model.processes().states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        if (entry->isRunning() && !AppModel::isInstall(entry.key())) {
            ids.append(entry.key());
        }
    }
    for (const ServiceID& id : m_model.orphans()->services()) {
        if (!states.value(id).isActive()) {
            ids.append(id);
        }
    }
    std::ranges::sort(ids, {}, [this](const ServiceID& id) {
        return std::tuple(m_model.projectName(id).toUtf8(), rawValue(id.kind), id.projectID, id.directory);
    });
    for (const ServiceID& id : std::as_const(ids)) {
        const QString name = m_model.projectName(id);
        rows.append(
            {key(id), id.projectID, name, serviceTitle(id, m_model.project(id.projectID)), address(id),
             m_model.isAddressListening(id), Tile::index(name), Tile::letter(name),
             states.value(id).isActive() ? u"running"_s : m_model.orphans()->state(id)});
    }
    running.setRows(rows);
}

void HomeModels::updateSummary(int shownBefore) {
    QStringList parts;
    if (!m_model.hasScanned()) {
        parts.append(tr("Looking for projects…"));
    } else if (m_model.projects().isEmpty()) {
        parts.append(tr("No projects in %1 yet").arg(m_model.scanRootText()));
    } else {
        if (const int count = m_model.runningCount(); count > 0) {
            parts.append(counted(count, tr("1 service running"), tr("%1 services running")));
        }
        if (const int count = m_model.leftCount(); count > 0) {
            parts.append(counted(count, tr("1 running from last time"), tr("%1 running from last time")));
        }
        const qsizetype unsaved =
            std::ranges::count_if(m_model.gitBadges(), [](const GitBadge& badge) { return badge.changes > 0; });
        if (unsaved > 0) {
            parts.append(
                counted(unsaved, tr("1 project with unsaved changes"), tr("%1 projects with unsaved changes")));
        }
        if (const int count = m_model.openTaskCount(); count > 0) {
            parts.append(counted(count, tr("1 open task"), tr("%1 open tasks")));
        }
        if (parts.isEmpty()) {
            parts.append(counted(m_model.projects().size(), tr("1 project"), tr("%1 projects")));
        }
    }
    const QString before = std::exchange(m_summaryLine, parts.join(u" · "_s));
    if (before != m_summaryLine || shownBefore != m_shownCount) {
        Q_EMIT summaryChanged();
    }
}

CardRow HomeModels::card(const Project& project) const {
    const Activity now = activity(project);
    const QList<RunAction> offered = m_model.startableActions(project);
    QStringList actions;
    for (const RunAction action : offered) {
        actions.append(rawValue(action));
    }
    const std::optional<RunAction> preferred = m_model.offeredAction(project);
    const GitBadge badge = m_model.gitBadge(project).value_or(GitBadge());
    return {
        .key = project.id,
        .name = project.name,
        .path = project.root,
        .stackLine = stackLine(project),
        .tileIndex = Tile::index(project.name),
        .tileLetter = Tile::letter(project.name),
        .isPinned = m_model.isPinned(project),
        .cardState = now.state,
        .message = now.message,
        .actions = actions,
        .defaultAction = preferred ? rawValue(*preferred) : QString(),
        .isFlutter = m_model.keeps(ProjectFilter::flutter, project),
        .services = now.services,
        .failedServices = now.failedServices,
        .gitRepositories = m_model.isGitKnown(project) ? badge.repoCount : -1,
        .gitBranch = badge.branch,
        .gitChanges = badge.changes,
        .gitAhead = badge.ahead,
        .gitBehind = badge.behind,
        .gitUnread = badge.unreadCount,
        .isGitBusy = m_model.isGitBusy(project),
    };
}

/// A search, or anything else that narrows the projects, shows its result alone, not within their collections.
bool HomeModels::isNarrowed() const {
    return !m_model.searchText().isEmpty() || m_model.filter() != ProjectFilter::all ||
           m_model.filters().narrowsProjects() || m_model.showOnlyUncommitted();
}

int HomeModels::countShown(const Shown& shown) const {
    const CollectionMode mode = m_model.filters().collections;
    if (mode == CollectionMode::show || mode == CollectionMode::expand) {
        return static_cast<int>(shown.size());
    }
    const QSet<QString> inside = m_model.appsInCollections();
    return static_cast<int>(std::ranges::count_if(
        shown.keys(), [&](const QString& id) { return inside.contains(id) == (mode == CollectionMode::only); }));
}

void HomeModels::addHomeCards(const QList<ProjectNode>& nodes, const Shown& shown, QList<CardRow>& rows) const {
    const CollectionMode mode = m_model.filters().collections;
    for (const ProjectNode& node : nodes) {
        if (node.project) {
            if (mode != CollectionMode::only && shown.contains(node.project->id)) {
                rows.append(shown[node.project->id]);
            }
            addHomeCards(node.children, shown, rows);
            continue;
        }
        const QList<Project> apps = node.apps();
        const bool holdsShown =
            std::ranges::any_of(apps, [&shown](const Project& app) { return shown.contains(app.id); });
        if (holdsShown && (mode == CollectionMode::only || (mode == CollectionMode::show && !isNarrowed()))) {
            rows.append(collection(node));
        } else if (mode == CollectionMode::show || mode == CollectionMode::expand) {
            for (const Project& app : apps) {
                if (shown.contains(app.id)) {
                    rows.append(shown[app.id]);
                }
            }
        }
    }
}

void HomeModels::addFolderRows(
    const QList<ProjectNode>& nodes, int depth, const Shown& shown, QList<CardRow>& rows) const {
    const CollectionMode mode = m_model.filters().collections;
    const auto holdsShown = [&shown](const ProjectNode& node) {
        return std::ranges::any_of(node.apps(), [&shown](const Project& app) { return shown.contains(app.id); });
    };
    for (const ProjectNode* node : OutlineModel::foldersFirst(nodes)) {
        const bool isLeftOut =
            node->project ? depth == 0 && mode == CollectionMode::only : mode == CollectionMode::hide;
        if (isLeftOut || !holdsShown(*node)) {
            continue;
        }
        // A project around one that is shown is there for its sake.
        CardRow row = !node->project                      ? collection(*node)
                      : shown.contains(node->project->id) ? shown[node->project->id]
                                                          : card(*node->project);
        const bool opensByItself = isNarrowed() || mode == CollectionMode::expand;
        row.depth = depth;
        row.hasChildren = std::ranges::any_of(node->children, holdsShown);
        row.isExpanded = row.hasChildren && m_openFolders.value(node->path, opensByItself);
        rows.append(row);
        if (row.isExpanded) {
            addFolderRows(node->children, depth + 1, shown, rows);
        }
    }
}

void HomeModels::setFolderOpen(const QString& path, bool isOpen) {
    if (m_openFolders.value(path, !isOpen) != isOpen) {
        m_openFolders.insert(path, isOpen);
        update();
        Q_EMIT openFoldersChanged();
    }
}

void HomeModels::setOpenFolders(const QHash<QString, bool>& folders) {
    m_openFolders = folders;
    updateSoon();
}

CardRow HomeModels::collection(const ProjectNode& node) const {
    CardRow row;
    row.key = node.path + u'/';
    row.path = node.path;
    row.name = node.name;
    row.isCollection = true;
    row.cardState = u"idle"_s;
    for (const Project& app : node.apps()) {
        const QString state = activity(app).state;
        row.runningMembers += state == u"running"_s || state == u"starting"_s || state == u"orphaned"_s ? 1 : 0;
        row.members.append(QVariantMap{
            {u"projectID"_s, app.id},
            {u"name"_s, app.name},
            {u"tileIndex"_s, Tile::index(app.name)},
            {u"tileLetter"_s, Tile::letter(app.name)}});
    }
    if (row.runningMembers > 0) {
        row.cardState = u"running"_s;
    }
    return row;
}

HomeModels::Activity HomeModels::activity(const Project& project) const {
    Activity now;
    const bool isAwaitingDevice = m_model.devices()->isAwaited(project.id);
    bool isInstalling = m_model.setup() && m_model.setup()->project.id == project.id &&
                        m_model.setup()->phase.kind == SetupSession::Phase::Kind::running;
    bool isRunning = false;
    bool isActive = false;
    if (m_startedProjects.contains(project.id)) {
        for (const ServiceID& id : m_model.services(project)) {
            const ServiceState state = m_model.processes().state(id);
            if (AppModel::isInstall(id)) {
                isInstalling = isInstalling || state.isActive();
                continue;
            }
            if (state.isActive()) {
                isRunning = isRunning || state.isRunning();
                isActive = true;
                now.services.append(shown(id));
            } else if (state.phase == ServiceState::Phase::failed) {
                now.message = now.message.isEmpty() ? state.message : now.message;
                now.failedServices.append(failed(id, state.message));
            }
        }
    }
    for (const ServiceID& id : m_model.orphans()->services(project.id)) {
        if (!m_model.processes().state(id).isActive()) {
            now.services.append(shown(id));
        }
    }
    if (isRunning) {
        now.state = u"running"_s;
    } else if (isActive || isAwaitingDevice) {
        now.state = u"starting"_s;
    } else if (isInstalling) {
        now.state = u"installing"_s;
    } else if (!now.services.isEmpty()) {
        now.state = u"orphaned"_s;
    } else if (!now.message.isEmpty()) {
        now.state = u"failed"_s;
    }
    return now;
}

QVariantMap HomeModels::shown(const ServiceID& id) const {
    const ServiceState state = m_model.processes().state(id);
    const bool isInstall = AppModel::isInstall(id);
    return {
        {u"kind"_s, rawValue(id.kind)},
        {u"label"_s, isInstall ? tr("Install") : shortServiceTitle(id, m_model.project(id.projectID))},
        {u"title"_s, isInstall ? tr("Install") : serviceTitle(id, m_model.project(id.projectID))},
        {u"phase"_s, state.isActive() ? rawValue(state.phase) : m_model.orphans()->state(id)},
        {u"port"_s, m_model.addressPort(id).value_or(0)},
        {u"address"_s, address(id)},
        {u"portListening"_s, m_model.isAddressListening(id)},
        {u"key"_s, key(id)},
    };
}

QVariantMap HomeModels::failed(const ServiceID& id, const QString& message) const {
    const std::optional<RunAction> action = runActionFrom({id.kind});
    return {
        {u"kind"_s, rawValue(id.kind)},
        {u"label"_s, shortServiceTitle(id, m_model.project(id.projectID))},
        {u"title"_s, serviceTitle(id, m_model.project(id.projectID))},
        {u"message"_s, message},
        {u"action"_s, rawValue(*action)},
        {u"key"_s, key(id)},
    };
}

QString HomeModels::address(const ServiceID& id) const {
    const std::optional<int> port = m_model.addressPort(id);
    return port ? u"localhost:"_s + QString::number(*port) : QString();
}

QString HomeModels::key(const ServiceID& id) {
    return QStringList{rawValue(id.kind), id.projectID, id.directory}.join(u'\n');
}

std::optional<ServiceID> HomeModels::service(const QString& wanted) const {
    const auto& states = m_model.processes().states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        if (key(entry.key()) == wanted) {
            return entry.key();
        }
    }
    for (const ChildRecord& child : m_model.orphans()->all()) {
        if (child.kind && key({child.projectID, *child.kind, child.directory}) == wanted) {
            return ServiceID{child.projectID, *child.kind, child.directory};
        }
    }
    return {};
}

} // namespace orv
