#include "OrvUI/QuickActions.h"

#include <array>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct Verb {
    QLatin1StringView going;
    QLatin1StringView gone;
};
constexpr std::array verbs{
    Verb{"Fetching "_L1, "Fetched "_L1}, Verb{"Pulling "_L1, "Pulled "_L1}, Verb{"Pushing "_L1, "Pushed "_L1}};

constexpr std::array preferredActions{RunAction::both, RunAction::frontend, RunAction::backend,
                                      RunAction::app,  RunAction::flutter,  RunAction::docker};

} // namespace

QList<PinnedEntry> PinnedMenu::entries(
    const QList<Project>& pinned, const std::function<bool(const Project&)>& isRunning) {
    QList<PinnedEntry> entries;
    for (const Project& project : pinned) {
        const bool runs = isRunning(project);
        entries.append({project.id, (runs ? u"Stop "_s : u"Run "_s) + project.name, runs});
    }
    return entries;
}

std::optional<RunAction> CardPrimaryAction::defaultAction(
    const QList<RunAction>& available, const std::optional<QString>& last) {
    if (const auto action = last ? runAction(*last) : std::nullopt; action && available.contains(*action)) {
        return action;
    }
    for (const RunAction action : preferredActions) {
        if (available.contains(action)) {
            return action;
        }
    }
    return {};
}

QuickGitReport QuickGit::busy(const QString& project) {
    return {false, project + u" is still busy with git."_s};
}

QuickGitReport QuickGit::noRepository(const QString& project) {
    return {false, project + u" isn't a git repository."_s};
}

QString QuickGit::progress(QuickGitAction action, const QString& project) {
    return verbs[static_cast<size_t>(action)].going + project + u'\u2026';
}

QuickGitReport QuickGit::done(QuickGitAction action, const QString& project, qsizetype repositories) {
    const QString count = repositories > 1 ? u" (%1 repositories)"_s.arg(repositories) : QString();
    return {true, verbs[static_cast<size_t>(action)].gone + project + count + u'.'};
}

} // namespace orv
