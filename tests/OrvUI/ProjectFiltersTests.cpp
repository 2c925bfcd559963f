#include "OrvUI/ProjectFilters.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

Project project(const QString& id, const QList<std::pair<ServiceKind, QString>>& targets) {
    Project made{id, id, id, {}};
    for (const auto& [kind, framework] : targets) {
        const auto known = framework.isEmpty() ? std::nullopt : std::optional(framework);
        made.targets.append({kind, id, known, {}, {}});
    }
    return made;
}

} // namespace

TEST(ProjectFilterSet, LetsAProjectPass) {
    const Project shop = project(u"/shop"_s, {{ServiceKind::frontend, u"Vite"_s}, {ServiceKind::backend, {}}});
    const ProjectFacts idle;
    const ProjectFacts changed{.badge = GitBadge{1, 0, 0, 1, {}}, .isRunning = true, .isPinned = true};
    const ProjectFacts ahead{.badge = GitBadge{0, 3, 0, 1, {}}};
    const ProjectFacts unread{.badge = GitBadge{0, 0, 0, 2, {}, 1}};
    const ProjectFacts changedAndUnread{.badge = GitBadge{1, 0, 0, 2, {}, 1}};
    struct Case {
        const char* label;
        std::function<void(ProjectFilterSet&)> ask;
        ProjectFacts facts;
        bool passes;
        int active;
        bool narrows;
    };
    const auto kinds = [](std::set<KindFilter> wanted) {
        return [wanted](ProjectFilterSet& filters) { filters.kinds = wanted; };
    };
    const auto frameworks = [](const QSet<QString>& wanted) {
        return [wanted](ProjectFilterSet& filters) { filters.frameworks = wanted; };
    };
    const auto git = [](GitFilter wanted) { return [wanted](ProjectFilterSet& filters) { filters.git = wanted; }; };
    const auto everything = [](ProjectFilterSet& filters) {
        filters = {{KindFilter::frontend}, {u"Vite"_s}, GitFilter::changes, true, true, CollectionMode::only};
    };
    const std::vector<Case> cases{
        {"nothing asked", [](ProjectFilterSet&) {}, idle, true, 0, false},
        {"collections hidden", [](ProjectFilterSet& filters) { filters.collections = CollectionMode::hide; }, idle,
         true, 1, false},
        {"one kind of several", kinds({KindFilter::docker, KindFilter::backend}), idle, true, 1, true},
        {"full-stack", kinds({KindFilter::fullStack}), idle, true, 1, true},
        {"no such kind", kinds({KindFilter::docker, KindFilter::app, KindFilter::flutter}), idle, false, 1, true},
        {"framework", frameworks({u"Vite"_s, u"Go"_s}), idle, true, 1, true},
        {"no such framework", frameworks({u"vite"_s, u""_s}), idle, false, 1, true},
        {"changes", git(GitFilter::changes), changed, true, 1, true},
        {"changes of a clean one", git(GitFilter::changes), ahead, false, 1, true},
        {"changes without a badge", git(GitFilter::changes), idle, false, 1, true},
        {"clean", git(GitFilter::clean), ahead, true, 1, true},
        {"clean with changes", git(GitFilter::clean), changed, false, 1, true},
        {"changes of one that can't be read", git(GitFilter::changes), unread, false, 1, true},
        {"changes beside what can't be read", git(GitFilter::changes), changedAndUnread, true, 1, true},
        {"clean, as far as it can be read", git(GitFilter::clean), unread, false, 1, true},
        {"clean without a badge", git(GitFilter::clean), idle, false, 1, true},
        {"running", [](ProjectFilterSet& filters) { filters.onlyRunning = true; }, idle, false, 1, true},
        {"pinned", [](ProjectFilterSet& filters) { filters.onlyPinned = true; }, idle, false, 1, true},
        {"everything at once", everything, changed, true, 6, true},
    };
    for (const Case& row : cases) {
        ProjectFilterSet filters;
        row.ask(filters);
        EXPECT_EQ(passesFilters(filters, shop, row.facts), row.passes) << row.label;
        EXPECT_EQ(filters.activeCount(), row.active) << row.label;
        EXPECT_EQ(filters.isActive(), row.active > 0) << row.label;
        EXPECT_EQ(filters.narrowsProjects(), row.narrows) << row.label;
    }
}

TEST(ProjectFilterSet, KnowsWhatThereIsToChooseFrom) {
    const Project vite = project(u"/a"_s, {{ServiceKind::frontend, u"Vite"_s}, {ServiceKind::app, u"Go"_s}});
    const Project other = project(u"/c/b"_s, {{ServiceKind::app, {}}, {ServiceKind::app, u"Vite"_s}});
    EXPECT_EQ(availableFrameworks({vite, other}), (QStringList{u"Go"_s, u"Vite"_s}));

    const auto node = [](const QString& path, std::optional<Project> made, QList<ProjectNode> children) {
        return ProjectNode{path, path, std::move(made), std::move(children)};
    };
    const QList<ProjectNode> tree{
        node(
            u"/a"_s, vite,
            {node(u"/a/x"_s, project(u"/a/x"_s, {}), {}),
             node(u"/a/c"_s, {}, {node(u"/a/c/y"_s, project(u"/a/c/y"_s, {}), {})})}),
        node(u"/c"_s, {}, {node(u"/c/b"_s, other, {node(u"/c/b/z"_s, project(u"/c/b/z"_s, {}), {})})})};
    EXPECT_EQ(appsInCollections(tree), (QSet<QString>{u"/a/c/y"_s, u"/c/b"_s, u"/c/b/z"_s}));
}
