#pragma once

#include "OrvCore/AgentRunFiles.h"
#include "OrvGit/TaskWorktree.h"
#include "OrvGit/WorkSnapshot.h"

#include <memory>

namespace orv {

/// What has to be done around a run with files and git. Functions of values; they block, on any thread.
namespace AgentWork {

/// Where a run that gets a work tree of its own gets it.
struct WorktreeWish {
    enum class Need { must, ifPossible };

    QString folder; ///< in which it is made
    QStringList copies;
    Need need = Need::must; ///< what becomes of a run in a project that can't have one
};

struct Request {
    AgentRunFiles files;
    AgentRunRecord record;
    std::optional<WorktreeWish> worktree;
    GitRunner runner;
};

struct Ready {
    /// Shared, for results of a future are copied.
    std::shared_ptr<UniqueFd> hold;
    QString folder; ///< where the agent is to work
    std::optional<AgentWorktree> worktree;
    QList<WorkSnapshot> snapshots; ///< one a repository
    QString note;                  ///< what can't be told later, as sentences
    QString storeProblem;          ///< why nothing of the run is kept; empty when it is
};

/// Makes the run's folder and stores its record, makes the work tree, notes how the project's repositories are. Says,
/// in words for the user, why the run can't have its work tree; anything else that fails is no reason not to run. Where
/// the project has no repository or no commit, only a work tree that must be had is such a reason.
[[nodiscard]] std::expected<Ready, QString> prepare(const Request& request);

/// What has changed since. Stores the diff, and removes what was only needed for it.
[[nodiscard]] AgentChanges changesSince(
    const AgentRunFiles& files, const QUuid& run, const Ready& ready, const GitRunner& runner);

struct Diff {
    QList<FileDiff> files;
    bool isCut = false;
};
/// The stored one; nothing where none is stored.
[[nodiscard]] std::optional<Diff> storedDiff(const AgentRunFiles& files, const QUuid& run);
/// All that was done in a run's own work tree, by whichever run, beside the commit at which it began.
[[nodiscard]] std::expected<Diff, QString> worktreeDiff(
    const AgentRunFiles& files, const QUuid& run, const AgentWorktree& worktree, const GitRunner& runner);

[[nodiscard]] TaskWorktree taskWorktree(const AgentWorktree& worktree);

/// Whether the end of an agent's output asks something of a person ("Continue? [y/N] ").
[[nodiscard]] bool asksForInput(QByteArrayView endOfOutput);
/// As it stands in the file of the run.
[[nodiscard]] bool outputAsksForInput(const QString& outputFile);

} // namespace AgentWork
} // namespace orv
