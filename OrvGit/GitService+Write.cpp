#include "GitWords_p.h"
#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/GitService.h"
#include "OrvGit/RepositoryLayout.h"
#include "OrvGit/WorkTreeFiles_p.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Half of what the stricter system takes for all arguments and the environment together.
constexpr qsizetype argumentBytes = 256 * 1024;

/// The command that goes on with what was begun, or ends it; empty for what has none.
GitArguments operationCommand(GitOperation operation, const char* option) {
    switch (operation) {
    case GitOperation::merge:
        return {"merge", option};
    case GitOperation::rebase:
        return {"rebase", option};
    case GitOperation::applyMailbox:
        return {"am", option};
    case GitOperation::cherryPick:
        return {"cherry-pick", option};
    case GitOperation::revert:
        return {"revert", option};
    case GitOperation::bisect:
    case GitOperation::none:
        return {};
    }
    Q_UNREACHABLE();
}

/// A stash of untracked files cleans up by a pattern of its own, which must not be taken for a file's name. None of
/// these commands gets a path from us.
GitRunner withPatterns(GitRunner runner) {
    runner.extraEnvironment.insert(u"GIT_LITERAL_PATHSPECS"_s, u"0"_s);
    return runner;
}

/// Exits with 0 where a submodule is at the commit that is staged.
GitArguments sameCommit(const QString& path) {
    return {"diff", "--quiet", "--ignore-submodules=dirty", "--", GitPath::toBytes(path)};
}

/// What a discard does with which paths.
struct DiscardPlan {
    QStringList deleted;
    QStringList restored;
    QStringList restoredInIndex; ///< nobody asked for the new file that lies there
};

GitOutcome<DiscardPlan> planOf(const RepoStatus& status, const QString& repository, const QStringList& paths) {
    DiscardPlan plan;
    const QSet<QString> wanted(paths.begin(), paths.end());
    QSet<QString> asked = wanted;
    QStringList untracked;
    QStringList written;
    for (const FileChange& change : status.changesOf(paths)) {
        asked.remove(change.path);
        if (change.isUntracked()) {
            untracked.append(change.path);
            continue;
        }
        plan.restored.append(change.path);
        const bool isInHead = change.index != 'A' && change.index != 'R' && change.index != 'C' &&
                              (change.index != '.' || (change.worktree != 'A' && change.worktree != 'R'));
        if (isInHead) {
            written.append(change.path);
        }
        if (change.touchedPaths().contains(change.originalPath)) {
            const QString& old = change.originalPath;
            const bool isLeft = !wanted.contains(old) && WorkTreeFiles::isFile(repository, old) &&
                                !WorkTreeFiles::isSame(repository, old, change.path);
            (isLeft ? plan.restoredInIndex : plan.restored).append(old);
            if (!isLeft) {
                written.append(old);
            }
            asked.remove(old);
        }
    }
    // Whether there are such files at all, git says.
    plan.restored += QStringList(asked.begin(), asked.end());
    const QSet<QString> back(plan.restored.begin(), plan.restored.end());
    // One that is in the last commit and staged as removed, but is there all the same, has two records.
    for (const QString& path : untracked) {
        if (path.endsWith(u'/')) {
            return std::unexpected(GitError::refused(
                GitWords::tr("“%1” is a repository of its own. Delete it by hand.").arg(path.chopped(1))));
        }
        if (!back.contains(path)) {
            plan.deleted.append(path);
        }
    }
    if (auto own = WorkTreeFiles::requireNoRepository(repository, plan.restored); !own) {
        return std::unexpected(own.error());
    }
    const QSet<QString> going = back + QSet<QString>(plan.deleted.begin(), plan.deleted.end());
    const auto room = status.hasCommits ? WorkTreeFiles::requireRoom(repository, written, going) : GitOutcome<void>();
    return room ? GitOutcome<DiscardPlan>(std::move(plan)) : std::unexpected(room.error());
}

} // namespace

/// One command, or several when there are more paths than one command line takes.
GitOutcome<void> GitService::runOn(
    const QString& repository, const GitArguments& arguments, const QStringList& paths) const {
    qsizetype next = 0;
    while (next < paths.size()) {
        GitArguments words = arguments;
        words << "--";
        for (qsizetype bytes = 0; next < paths.size() && bytes < argumentBytes; ++next) {
            words << GitPath::toBytes(paths[next]);
            bytes += words.back().size() + static_cast<qsizetype>(sizeof(char*)) + 1;
        }
        if (auto done = perform(repository, words, GitLimits::local); !done) {
            return done;
        }
    }
    return {};
}

GitOutcome<void> GitService::stage(const QString& repository, const QStringList& paths) const {
    // Of a submodule, git takes the commit that it is at.
    QStringList taken;
    GitOutcome<void> able;
    for (const QString& path : paths) {
        const bool isModule = !path.endsWith(u'/') && !WorkTreeFiles::requireNoRepository(repository, {path});
        const auto same = isModule ? runner.runRaw(sameCommit(path), repository, GitLimits::local)
                                   : std::unexpected(GitError::of(GitError::Kind::notARepo));
        if (same && same->code == 0) {
            able = std::unexpected(GitError::refused(
                u"“%1” is a repository of its own, at the commit that is noted. Commit its changes there first."_s.arg(
                    path)));
        } else {
            taken.append(path);
        }
    }
    return taken.isEmpty() ? able : runOn(repository, {"add"}, taken);
}

GitOutcome<void> GitService::unstage(const QString& repository, const QStringList& paths) const {
    const auto current = status(repository);
    if (!current) {
        return std::unexpected(current.error());
    }
    return runOn(
        repository,
        current->hasCommits ? GitArguments{"restore", "--staged"} : GitArguments{"rm", "--cached", "-f", "-r"}, paths);
}

GitOutcome<void> GitService::discard(const QString& repository, const QStringList& paths) const {
    const auto current = status(repository);
    if (!current) {
        return std::unexpected(current.error());
    }
    const auto plan = planOf(*current, repository, paths);
    if (!plan) {
        return std::unexpected(plan.error());
    }
    // What is new goes first: it may stand where something comes back.
    if (auto done = runOn(repository, {"clean", "-f"}, plan->deleted); !done) {
        return done;
    }
    if (auto done = runOn(repository, {"restore", "--source=HEAD", "--staged"}, plan->restoredInIndex); !done) {
        return done;
    }
    // Without a commit there is nothing to go back to: what is tracked has been added.
    const GitArguments restore = current->hasCommits
                                     ? GitArguments{"restore", "--source=HEAD", "--staged", "--worktree"}
                                     : GitArguments{"rm", "-r", "-f"};
    return runOn(repository, restore, plan->restored);
}

GitOutcome<void> GitService::writeCommit(
    const QString& repository, const GitArguments& arguments, const QString& summary,
    const QString& description) const {
    GitArguments words = arguments;
    words << "-m" << summary.toUtf8();
    if (!description.trimmed().isEmpty()) {
        words << "-m" << description.toUtf8();
    }
    return perform(repository, words, GitLimits::local);
}

GitOutcome<void> GitService::commit(
    const QString& repository, const QString& summary, const QString& description) const {
    const QString trimmed = summary.trimmed();
    if (trimmed.isEmpty()) {
        return std::unexpected(GitError::of(GitError::Kind::emptyMessage));
    }
    const auto staged = runner.runRaw({"diff", "--cached", "--quiet"}, repository, GitLimits::local);
    if (!staged) {
        return std::unexpected(staged.error());
    }
    if (staged->code == 0) {
        return std::unexpected(GitError::of(GitError::Kind::nothingToCommit));
    }
    if (staged->code != 1) {
        return std::unexpected(staged->error());
    }
    return writeCommit(repository, {"commit"}, trimmed, description);
}

GitOutcome<void> GitService::amend(
    const QString& repository, const QString& summary, const QString& description) const {
    const QString trimmed = summary.trimmed();
    if (trimmed.isEmpty()) {
        return std::unexpected(GitError::of(GitError::Kind::emptyMessage));
    }
    return writeCommit(repository, {"commit", "--amend"}, trimmed, description);
}

GitOutcome<void> GitService::continueOperation(const QString& repository) const {
    const auto state = operation(repository);
    if (!state) {
        return std::unexpected(state.error());
    }
    const GitArguments words = operationCommand(state->operation, "--continue");
    if (words.isEmpty()) {
        return std::unexpected(GitError::refused(GitWords::tr("Nothing is in progress that could go on.")));
    }
    auto done = runWithConflicts(repository, words, GitLimits::local);
    if (!done && done.error().kind == GitError::Kind::commandFailed && state->canSkip()) {
        const auto staged = runner.runRaw({"diff", "--cached", "--quiet"}, repository, GitLimits::local);
        if (staged && staged->code == 0) {
            return std::unexpected(GitError::refused(u"Nothing is left of this commit. Skip it to go on."_s));
        }
    }
    return done;
}

GitOutcome<void> GitService::skipOperation(const QString& repository) const {
    const auto state = operation(repository);
    if (!state) {
        return std::unexpected(state.error());
    }
    if (!state->canSkip()) {
        return std::unexpected(GitError::refused(u"Nothing is in progress of which a commit could be skipped."_s));
    }
    return runWithConflicts(repository, operationCommand(state->operation, "--skip"), GitLimits::local);
}

GitOutcome<void> GitService::abortOperation(const QString& repository) const {
    const auto state = operation(repository);
    if (!state) {
        return std::unexpected(state.error());
    }
    const GitArguments words = state->operation == GitOperation::bisect ? GitArguments{"bisect", "reset"}
                                                                        : operationCommand(state->operation, "--abort");
    if (words.isEmpty()) {
        return std::unexpected(GitError::refused(GitWords::tr("Nothing is in progress that could be aborted.")));
    }
    return perform(repository, words, GitLimits::local);
}

GitOutcome<void> GitService::switchBranch(const QString& repository, const QString& name) const {
    if (auto named = requireBranchName(name); !named) {
        return named;
    }
    return perform(repository, {"switch", GitPath::toBytes(name)}, GitLimits::local);
}

GitOutcome<void> GitService::switchToRemote(const QString& repository, const QString& remoteBranch) const {
    if (auto named = requireBranchName(remoteBranch); !named) {
        return named;
    }
    return perform(repository, {"switch", "--track", GitPath::toBytes(remoteBranch)}, GitLimits::local);
}

GitOutcome<void> GitService::createBranch(const QString& repository, const QString& name) const {
    if (auto named = requireBranchName(name); !named) {
        return named;
    }
    return perform(repository, {"switch", "-c", GitPath::toBytes(name)}, GitLimits::local);
}

GitOutcome<void> GitService::deleteBranch(const QString& repository, const QString& name, Deletion deletion) const {
    const char* const option = deletion == Deletion::always ? "-D" : "-d";
    return perform(repository, {"branch", option, "--", GitPath::toBytes(name)}, GitLimits::local);
}

GitOutcome<void> GitService::setUpstream(
    const QString& repository, const QString& branch, const QString& upstream) const {
    const QByteArray option =
        upstream.isEmpty() ? QByteArray("--unset-upstream") : "--set-upstream-to=" + GitPath::toBytes(upstream);
    return perform(repository, {"branch", option, "--", GitPath::toBytes(branch)}, GitLimits::local);
}

GitOutcome<void> GitService::stashSave(const QString& repository, const QString& message, Untracked untracked) const {
    GitArguments words{"stash", "push"};
    if (untracked == Untracked::included) {
        words << "--include-untracked";
    }
    if (const QString trimmed = message.trimmed(); !trimmed.isEmpty()) {
        words << "-m" << trimmed.toUtf8();
    }
    const auto output = withPatterns(runner).run(words, repository, GitLimits::local);
    if (output && output->contains("No local changes to save")) {
        return std::unexpected(GitError::refused(GitWords::tr("There are no local changes to stash.")));
    }
    return output ? GitOutcome<void>() : std::unexpected(output.error());
}

GitOutcome<void> GitService::runOnStash(const QString& repository, const char* verb, const StashEntry& entry) const {
    const QByteArray name = "stash@{" + QByteArray::number(entry.index) + '}';
    const auto id = runner.run({"rev-parse", "--verify", "--quiet", name}, repository, GitLimits::local);
    if (!id || QString::fromLatin1(id->trimmed()) != entry.id) {
        return std::unexpected(
            GitError::refused(GitWords::tr("The list of stashes has changed. Look at it again first.")));
    }
    return runWithConflicts(repository, {"stash", verb, name}, GitLimits::local);
}

GitOutcome<void> GitService::stashPop(const QString& repository, const StashEntry& entry) const {
    return runOnStash(repository, "pop", entry);
}

GitOutcome<void> GitService::stashApply(const QString& repository, const StashEntry& entry) const {
    return runOnStash(repository, "apply", entry);
}

GitOutcome<void> GitService::stashDrop(const QString& repository, const StashEntry& entry) const {
    return runOnStash(repository, "drop", entry);
}

} // namespace orv
