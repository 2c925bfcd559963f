#pragma once

#include "OrvUI/ModelTypes.h"

#include <QSet>

namespace orv {

// What narrows the list of projects beside the sidebar's filter and the search text.

enum class KindFilter { fullStack, frontend, backend, flutter, docker, app };
inline constexpr std::array allKindFilters{KindFilter::fullStack, KindFilter::frontend, KindFilter::backend,
                                           KindFilter::flutter,   KindFilter::docker,   KindFilter::app};
[[nodiscard]] QString title(KindFilter kind);
[[nodiscard]] bool matches(KindFilter kind, const Project& project);

enum class GitFilter { any, changes, clean };
[[nodiscard]] QString title(GitFilter git);

/// How collections, folders that group several projects, are shown.
enum class CollectionMode { show, expand, hide, only };
[[nodiscard]] QString title(CollectionMode mode);

struct ProjectFilterSet {
    std::set<KindFilter> kinds; ///< empty: any
    QSet<QString> frameworks;   ///< empty: any
    GitFilter git = GitFilter::any;
    bool onlyRunning = false;
    bool onlyPinned = false;
    CollectionMode collections = CollectionMode::show;

    bool operator==(const ProjectFilterSet&) const = default;
    [[nodiscard]] bool narrowsProjects() const; ///< the mode of collections leaves no project out
    [[nodiscard]] bool isActive() const { return activeCount() > 0; }
    [[nodiscard]] int activeCount() const; ///< how many of the members differ from the default
};

/// What the predicate needs to know beside the project.
struct ProjectFacts {
    std::optional<GitBadge> badge; ///< absent where there is no repository, and until it was looked at
    bool isRunning = false;
    bool isPinned = false;
};
[[nodiscard]] bool passesFilters(const ProjectFilterSet& filters, const Project& project, const ProjectFacts& facts);

/// The names of the frameworks of all targets, each once, in alphabetical order.
[[nodiscard]] QStringList availableFrameworks(const QList<Project>& projects);

/// The ids of the projects that lie inside a collection, at any depth.
[[nodiscard]] QSet<QString> appsInCollections(const QList<ProjectNode>& tree);

} // namespace orv
