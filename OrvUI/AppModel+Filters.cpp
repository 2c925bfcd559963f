#include "OrvCore/Async.h"
#include "OrvUI/AppModel_p.h"
#include "OrvUI/NameSearch.h"

#include <algorithm>

namespace orv {

bool AppModel::keeps(ProjectFilter filter, const Project& project) const {
    switch (filter) {
    case ProjectFilter::all:
        break;
    case ProjectFilter::pinned:
        return isPinned(project);
    case ProjectFilter::running:
        return isRunning(project) || std::ranges::count(d->orphans->services(), project.id, &ServiceID::projectID) > 0;
    case ProjectFilter::fullStack:
        return project.isFullStack();
    case ProjectFilter::flutter:
        return hasTarget(project, ServiceKind::flutter);
    }
    return true;
}

const ProjectFilterSet& AppModel::filters() const {
    return d->filters;
}

void AppModel::setFilters(const ProjectFilterSet& filters) {
    ORV_ASSERT_MAIN_THREAD();
    assign(this, d->filters, filters, &AppModel::filtersChanged);
}

void AppModel::clearFilters() {
    setFilters({});
}

bool AppModel::passesFilters(const Project& project) const {
    const std::optional<GitBadge> badge = gitBadge(project);
    const bool isUp = keeps(ProjectFilter::running, project);
    return (!d->showOnlyUncommitted || (badge && badge->changes > 0)) &&
           orv::passesFilters(d->filters, project, {.badge = badge, .isRunning = isUp, .isPinned = isPinned(project)});
}

QStringList AppModel::availableFrameworks() const {
    return orv::availableFrameworks(d->projects);
}

QSet<QString> AppModel::appsInCollections() const {
    return orv::appsInCollections(d->tree);
}

QStringList AppModel::projectsWithChanges() const {
    QStringList found;
    for (const Project& project : d->projects) {
        if (const auto badge = gitBadge(project); badge && badge->changes > 0) {
            found.append(project.id);
        }
    }
    return found;
}

QList<Project> AppModel::filteredProjects() const {
    const NameSearch search(d->searchText);
    QList<Project> found;
    for (const Project& project : d->projects) {
        if (keeps(d->filter, project) && search.matches(project.name) && passesFilters(project)) {
            found.append(project);
        }
    }
    return found;
}

} // namespace orv
