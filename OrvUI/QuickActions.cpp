#include "OrvUI/QuickActions.h"

#include <QCoreApplication>

#include <array>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(QuickGit)
};

struct Verb {
    const char* going;
    const char* gone;
};
constexpr std::array verbs{
    Verb{QT_TRANSLATE_NOOP("QuickGit", "Fetching %1…"), QT_TRANSLATE_NOOP("QuickGit", "Fetched %1.")},
    Verb{QT_TRANSLATE_NOOP("QuickGit", "Pulling %1…"), QT_TRANSLATE_NOOP("QuickGit", "Pulled %1.")},
    Verb{QT_TRANSLATE_NOOP("QuickGit", "Pushing %1…"), QT_TRANSLATE_NOOP("QuickGit", "Pushed %1.")}};

constexpr std::array preferredActions{RunAction::both, RunAction::frontend, RunAction::backend,
                                      RunAction::app,  RunAction::flutter,  RunAction::docker};

} // namespace

QList<PinnedEntry> PinnedMenu::entries(
    const QList<Project>& pinned, const std::function<bool(const Project&)>& isRunning) {
    QList<PinnedEntry> entries;
    for (const Project& project : pinned) {
        const bool runs = isRunning(project);
        entries.append({project.id, (runs ? Words::tr("Stop %1") : Words::tr("Run %1")).arg(project.name), runs});
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
    return {false, Words::tr("%1 is still busy with git.").arg(project)};
}

QuickGitReport QuickGit::noRepository(const QString& project) {
    return {false, Words::tr("%1 isn't a git repository.").arg(project)};
}

QString QuickGit::progress(QuickGitAction action, const QString& project) {
    return Words::tr(verbs[static_cast<size_t>(action)].going).arg(project);
}

QuickGitReport QuickGit::done(QuickGitAction action, const QString& project, qsizetype repositories) {
    const QString count = repositories > 1 ? Words::tr(" (%1 repositories)").arg(repositories) : QString();
    return {true, Words::tr(verbs[static_cast<size_t>(action)].gone).arg(project + count)};
}

} // namespace orv
