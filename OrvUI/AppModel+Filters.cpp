#include "OrvUI/AppModel_p.h"

namespace orv {

bool AppModel::keeps(ProjectFilter filter, const Project& project) const {
    switch (filter) {
    case ProjectFilter::all:
        break;
    case ProjectFilter::pinned:
        return isPinned(project);
    case ProjectFilter::running:
        return isRunning(project);
    case ProjectFilter::fullStack:
        return project.isFullStack();
    case ProjectFilter::flutter:
        return hasTarget(project, ServiceKind::flutter);
    }
    return true;
}

QList<Project> AppModel::filteredProjects() const {
    // A name that comes from the disk of a Mac may stand decomposed, what is typed is composed.
    const QString wanted = d->searchText.normalized(QString::NormalizationForm_C);
    QList<Project> found;
    for (const Project& project : d->projects) {
        if (keeps(d->filter, project) &&
            project.name.normalized(QString::NormalizationForm_C).contains(wanted, Qt::CaseInsensitive)) {
            found.append(project);
        }
    }
    return found;
}

} // namespace orv
