#pragma once

#include "OrvUI/ModelTypes.h"

#include <functional>

namespace orv {

/// A line of the menus that list the pinned projects.
struct PinnedEntry {
    QString id; ///< the project's
    QString title;
    bool isRunning = false;

    bool operator==(const PinnedEntry&) const = default;
};

namespace PinnedMenu {
/// "Run shop" or "Stop shop" for each, in their order.
[[nodiscard]] QList<PinnedEntry> entries(
    const QList<Project>& pinned, const std::function<bool(const Project&)>& isRunning);
} // namespace PinnedMenu

namespace CardPrimaryAction {
/// What the button of a card starts: the action of the project's last run, given by its label, where it is still
/// offered; else both, front end, back end, app, Flutter, Docker. None where nothing is offered.
[[nodiscard]] std::optional<RunAction> defaultAction(
    const QList<RunAction>& available, const std::optional<QString>& last);
} // namespace CardPrimaryAction

enum class QuickGitAction { fetch, pull, push };

/// How a quick git action ended, in a line for the user.
struct QuickGitReport {
    bool success = false;
    QString message;

    bool operator==(const QuickGitReport&) const = default;
};

/// The texts of quick git actions, by the name of the project.
namespace QuickGit {
[[nodiscard]] QuickGitReport busy(const QString& project);
[[nodiscard]] QuickGitReport noRepository(const QString& project);
[[nodiscard]] QString progress(QuickGitAction action, const QString& project); ///< "Pulling shop…"
[[nodiscard]] QuickGitReport done(QuickGitAction action, const QString& project, qsizetype repositories);
} // namespace QuickGit

} // namespace orv
