#include "OrvUI/ProjectFilters.h"

#include <QCoreApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct KindRow {
    const char* title;
    std::optional<ServiceKind> kind; ///< of which the project has a target; absent: it is full-stack
};

constexpr std::array kindRows{
    KindRow{QT_TRANSLATE_NOOP("ProjectFilters", "Full-stack"), {}},
    KindRow{QT_TRANSLATE_NOOP("ProjectFilters", "Frontend"), ServiceKind::frontend},
    KindRow{QT_TRANSLATE_NOOP("ProjectFilters", "Backend"), ServiceKind::backend},
    KindRow{QT_TRANSLATE_NOOP("ProjectFilters", "Flutter"), ServiceKind::flutter},
    KindRow{QT_TRANSLATE_NOOP("ProjectFilters", "Docker"), ServiceKind::docker},
    KindRow{QT_TRANSLATE_NOOP("ProjectFilters", "App"), ServiceKind::app},
};
static_assert(kindRows.size() == allKindFilters.size());

constexpr std::array gitTitles{
    QT_TRANSLATE_NOOP("ProjectFilters", "Any"), QT_TRANSLATE_NOOP("ProjectFilters", "Unsaved changes"),
    QT_TRANSLATE_NOOP("ProjectFilters", "Clean")};
constexpr std::array modeTitles{
    QT_TRANSLATE_NOOP("ProjectFilters", "As cards"), QT_TRANSLATE_NOOP("ProjectFilters", "Show their apps"),
    QT_TRANSLATE_NOOP("ProjectFilters", "Hide"), QT_TRANSLATE_NOOP("ProjectFilters", "Only collections")};

bool passesGit(GitFilter filter, const std::optional<GitBadge>& badge) {
    if (filter == GitFilter::any) {
        return true;
    }
    if (!badge) {
        return false;
    }
    // What could not be read is neither: it may hold changes, and nobody has seen any.
    return filter == GitFilter::changes ? badge->changes > 0 : badge->changes == 0 && badge->unreadCount == 0;
}

bool usesOneOf(const QSet<QString>& frameworks, const Project& project) {
    return std::ranges::any_of(project.targets, [&frameworks](const ServiceTarget& target) {
        return target.framework && frameworks.contains(*target.framework);
    });
}

void addApps(const QList<ProjectNode>& nodes, QSet<QString>& found) {
    for (const ProjectNode& node : nodes) {
        if (node.project) {
            addApps(node.children, found);
            continue;
        }
        for (const Project& app : node.apps()) {
            found.insert(app.id);
        }
    }
}

} // namespace

QString title(KindFilter kind) {
    return QCoreApplication::translate("ProjectFilters", kindRows[static_cast<size_t>(kind)].title);
}
QString title(GitFilter git) {
    return QCoreApplication::translate("ProjectFilters", gitTitles[static_cast<size_t>(git)]);
}
QString title(CollectionMode mode) {
    return QCoreApplication::translate("ProjectFilters", modeTitles[static_cast<size_t>(mode)]);
}

bool matches(KindFilter kind, const Project& project) {
    const auto& wanted = kindRows[static_cast<size_t>(kind)].kind;
    if (!wanted) {
        return project.isFullStack();
    }
    return std::ranges::find(project.targets, *wanted, &ServiceTarget::kind) != project.targets.end();
}

bool ProjectFilterSet::narrowsProjects() const {
    ProjectFilterSet others = *this;
    others.collections = CollectionMode::show;
    return others.isActive();
}

int ProjectFilterSet::activeCount() const {
    const std::array isSet{
        !kinds.empty(),
        !frameworks.isEmpty(),
        git != GitFilter::any,
        onlyRunning,
        onlyPinned,
        collections != CollectionMode::show};
    return static_cast<int>(std::ranges::count(isSet, true));
}

bool passesFilters(const ProjectFilterSet& filters, const Project& project, const ProjectFacts& facts) {
    const auto isOfKind = [&project](KindFilter kind) { return matches(kind, project); };
    return (filters.kinds.empty() || std::ranges::any_of(filters.kinds, isOfKind)) &&
           (filters.frameworks.isEmpty() || usesOneOf(filters.frameworks, project)) &&
           passesGit(filters.git, facts.badge) && (!filters.onlyRunning || facts.isRunning) &&
           (!filters.onlyPinned || facts.isPinned);
}

QStringList availableFrameworks(const QList<Project>& projects) {
    QStringList names;
    for (const Project& project : projects) {
        for (const ServiceTarget& target : project.targets) {
            if (target.framework && !names.contains(*target.framework)) {
                names.append(*target.framework);
            }
        }
    }
    names.sort(Qt::CaseInsensitive);
    return names;
}

QSet<QString> appsInCollections(const QList<ProjectNode>& tree) {
    QSet<QString> found;
    addApps(tree, found);
    return found;
}

} // namespace orv
