#pragma once

#include "OrvGit/GitService.h"

namespace orv {

/// A work tree that one task has to itself, on a branch of its own (git-worktree(1)).
struct TaskWorktree {
    QString repository; ///< the work tree from which it was made, and into which it is merged
    QString folder;     ///< its top
    QString branch;
    QString base;       ///< hash of the commit at which it began
    QStringList copies; ///< untracked files that it was given, from the top

    bool operator==(const TaskWorktree&) const = default;
};

/// Makes such work trees and takes them down again. Nothing that was done in one is lost unless that is asked for.
/// Functions block, on any thread.
class TaskWorktrees {
public:
    explicit TaskWorktrees(GitRunner runner) : m_service(std::move(runner)) {}

    struct Request {
        QString repository;
        QString folder;     ///< must not be there
        QString branch;     ///< likewise
        QString copiesFrom; ///< the folder in the repository that the patterns begin at
        QStringList copies; ///< patterns (gitglossary(7), pathspec with "glob") of untracked files that it gets
    };
    [[nodiscard]] GitOutcome<TaskWorktree> make(const Request& request) const;

    /// What is nowhere else.
    struct Loss {
        int files = 0;   ///< not committed, or copies that were changed
        int commits = 0; ///< on no other branch or tag

        bool operator==(const Loss&) const = default;
        [[nodiscard]] bool isNothing() const { return files == 0 && commits == 0; }
        /// "2 changed files and 1 commit"
        [[nodiscard]] QString text() const;
    };
    [[nodiscard]] GitOutcome<Loss> lossOf(const TaskWorktree& worktree) const;
    enum class Discard { ifNothingIsLost, always };
    /// Removes folder and branch.
    [[nodiscard]] GitOutcome<void> discard(const TaskWorktree& worktree, Discard discard) const;

    enum class AfterMerge { removed, kept };
    /// Commits what is not committed there, with the message, merges the whole into what is checked out in the
    /// repository, and removes the work tree, unless copied files were changed there. When that can't be done, be it
    /// for conflicts, repository and work tree are as they were.
    [[nodiscard]] GitOutcome<AfterMerge> mergeBack(const TaskWorktree& worktree, const QString& message) const;

    /// There is no commit yet, so none can be made.
    [[nodiscard]] bool isUnborn(const QString& repository) const;

private:
    [[nodiscard]] const GitRunner& runner() const { return m_service.runner; }
    [[nodiscard]] GitOutcome<QString> commitOf(const QString& folder, const QByteArray& name) const;
    [[nodiscard]] QStringList copyInto(const TaskWorktree& worktree, const Request& request) const;
    [[nodiscard]] static int changedCopies(const TaskWorktree& worktree);
    [[nodiscard]] GitOutcome<bool> commitAll(const TaskWorktree& worktree, const QString& message) const;
    [[nodiscard]] GitOutcome<void> merge(const TaskWorktree& worktree, const QString& tip) const;
    [[nodiscard]] GitOutcome<void> requireNoConflicts(const QString& repository, const QString& tip) const;
    [[nodiscard]] GitOutcome<void> remove(const TaskWorktree& worktree, const QByteArray& branchOption) const;

    GitService m_service;
};

/// A name for the branch of a task: "agent/fix-the-flaky-test-3f2a9c".
[[nodiscard]] QString taskBranchName(const QString& task, const QString& suffix);

} // namespace orv
