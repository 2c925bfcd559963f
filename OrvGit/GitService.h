#pragma once

#include "OrvGit/CloneProgress.h"
#include "OrvGit/Diff.h"
#include "OrvGit/GitModels.h"
#include "OrvGit/GitRunner.h"
#include "OrvGit/Patch.h"

namespace orv {

/// Between which two states a diff is taken.
enum class DiffSide {
    unstaged,  ///< the index and the work tree
    staged,    ///< HEAD and the index
    untracked, ///< nothing and the work tree
};

/// A file's diff: of one change, on one side.
struct DiffRequest {
    QString path;
    QString originalPath; ///< of a rename or copy, so that it is shown as such; may be empty
    DiffSide side = DiffSide::unstaged;

    bool operator==(const DiffRequest&) const = default;
    /// The staged side where there is one, which is what a list of changes shows first.
    [[nodiscard]] static DiffRequest of(const FileChange& change);
};

/// The vocabulary of git actions: each is one or more git commands in the folder of a repository. Its functions block,
/// on any thread; it holds nothing but its runner and keeps nothing between calls.
///
/// Paths are relative to the repository's root. What fails gives a GitError; a command is tried again only when it
/// found the index locked.
class GitService {
public:
    GitService() = default;
    explicit GitService(GitRunner gitRunner) : runner(std::move(gitRunner)) {}

    GitRunner runner;

    // What there is. One status of a repository runs at a time in this process.
    [[nodiscard]] GitOutcome<RepoStatus> status(const QString& repository) const;
    /// As `status`, with the changes only counted; those below a folder of it where one is named.
    [[nodiscard]] GitOutcome<RepoStatus> statusCounts(
        const QString& repository, int& changes, const QString& below = {}) const;
    /// Newest first; empty in a repository without a commit.
    [[nodiscard]] GitOutcome<QList<CommitInfo>> log(const QString& repository, int limit) const;
    [[nodiscard]] GitOutcome<QList<HistoryEntry>> history(const QString& repository, const HistoryQuery& query) const;
    [[nodiscard]] GitOutcome<QStringList> branches(const QString& repository) const;
    /// The local ones, then those of the remotes.
    [[nodiscard]] GitOutcome<QList<BranchInfo>> branchInfos(const QString& repository) const;
    [[nodiscard]] GitOutcome<QList<StashEntry>> stashes(const QString& repository) const;
    /// The whole message of the last commit; empty in a repository without one.
    [[nodiscard]] GitOutcome<QString> headMessage(const QString& repository) const;
    /// The top folder of the work tree that the folder lies in, without symbolic links.
    [[nodiscard]] GitOutcome<QString> topFolder(const QString& folder) const;
    /// What was begun and is not finished.
    [[nodiscard]] GitOutcome<OperationState> operation(const QString& repository) const;

    // Diffs. What is larger than `largestDiffBytes` says so instead.
    static constexpr qsizetype largestDiffBytes = 16 * 1024 * 1024;
    [[nodiscard]] GitOutcome<FileDiff> fileDiff(const QString& repository, const DiffRequest& request) const;
    /// What a commit changed, beside its first parent.
    [[nodiscard]] GitOutcome<QList<FileDiff>> commitDiff(const QString& repository, const QString& commit) const;

    // Staging
    [[nodiscard]] GitOutcome<void> stage(const QString& repository, const QStringList& paths) const;
    [[nodiscard]] GitOutcome<void> unstage(const QString& repository, const QStringList& paths) const;
    /// Back to HEAD, index and work tree; an untracked file is deleted. A rename goes back by either name; a new file
    /// at the old one stays unless it is among the paths. Refused for a repository of its own, and where a file that is
    /// not among the paths would have to go.
    [[nodiscard]] GitOutcome<void> discard(const QString& repository, const QStringList& paths) const;
    /// Lines of a diff that was `shown`. Refused when the file's diff is another one by now.
    [[nodiscard]] GitOutcome<void> stageLines(
        const QString& repository, const DiffRequest& request, const FileDiff& shown,
        const DiffSelection& selection) const;
    [[nodiscard]] GitOutcome<void> unstageLines(
        const QString& repository, const DiffRequest& request, const FileDiff& shown,
        const DiffSelection& selection) const;
    /// Undoes the lines in the work tree.
    [[nodiscard]] GitOutcome<void> discardLines(
        const QString& repository, const DiffRequest& request, const FileDiff& shown,
        const DiffSelection& selection) const;

    // Commits
    [[nodiscard]] GitOutcome<void> commit(
        const QString& repository, const QString& summary, const QString& description) const;
    /// Replaces the last commit, with what is staged in it and the given message.
    [[nodiscard]] GitOutcome<void> amend(
        const QString& repository, const QString& summary, const QString& description) const;
    [[nodiscard]] GitOutcome<void> continueOperation(const QString& repository) const;
    /// Leaves out the commit that a rebase or the like is at.
    [[nodiscard]] GitOutcome<void> skipOperation(const QString& repository) const;
    [[nodiscard]] GitOutcome<void> abortOperation(const QString& repository) const;

    // Branches
    /// `name` may also be a branch of one remote, which is then followed.
    [[nodiscard]] GitOutcome<void> switchBranch(const QString& repository, const QString& name) const;
    /// To a new branch that follows the one of a remote ("origin/feat/x") and has its name there.
    [[nodiscard]] GitOutcome<void> switchToRemote(const QString& repository, const QString& remoteBranch) const;
    [[nodiscard]] GitOutcome<void> createBranch(const QString& repository, const QString& name) const;
    enum class Deletion { ifMerged, always };
    [[nodiscard]] GitOutcome<void> deleteBranch(
        const QString& repository, const QString& name, Deletion deletion) const;
    /// An empty upstream takes it away.
    [[nodiscard]] GitOutcome<void> setUpstream(
        const QString& repository, const QString& branch, const QString& upstream) const;

    // Stashes. An entry is refused when another one stands in its place by now.
    enum class Untracked { kept, included };
    [[nodiscard]] GitOutcome<void> stashSave(
        const QString& repository, const QString& message, Untracked untracked) const;
    [[nodiscard]] GitOutcome<void> stashPop(const QString& repository, const StashEntry& entry) const;
    [[nodiscard]] GitOutcome<void> stashApply(const QString& repository, const StashEntry& entry) const;
    [[nodiscard]] GitOutcome<void> stashDrop(const QString& repository, const StashEntry& entry) const;

    // Remotes
    [[nodiscard]] GitOutcome<void> fetch(const QString& repository) const;
    [[nodiscard]] GitOutcome<void> pull(const QString& repository, PullStrategy strategy) const;
    /// Publishes a branch without an upstream to "origin".
    [[nodiscard]] GitOutcome<void> push(const QString& repository) const;
    /// `name` is the folder that is made in `into`. A clone that is cancelled leaves none. `onLine` is called on the
    /// calling thread.
    [[nodiscard]] GitOutcome<void> clone(
        const QString& url, const QString& into, const QString& name,
        const std::function<void(const QString&)>& onLine) const;

    // Configuration
    [[nodiscard]] GitOutcome<void> initRepository(const QString& folder, const QString& branch) const;
    [[nodiscard]] GitOutcome<GitIdentity> identity(const QString& repository, GitScope scope) const;
    /// What a commit there would carry.
    [[nodiscard]] GitOutcome<GitIdentity> effectiveIdentity(const QString& repository) const;
    /// A part that is absent stays as it is.
    [[nodiscard]] GitOutcome<void> setIdentity(
        const GitIdentity& identity, const QString& repository, GitScope scope) const;
    [[nodiscard]] GitOutcome<void> setGlobalConfig(const QString& key, const QString& value) const;
    /// Nothing when it is unset, or on failure. Neither looks at any repository's configuration.
    [[nodiscard]] std::optional<QString> globalConfigValue(const QString& key) const;
    [[nodiscard]] std::optional<QString> effectiveConfigValue(const QString& key) const;

    /// Every folder of the tree that contains ".git", the top included, sorted. Goes five levels deep and neither into
    /// hidden folders, nor into links, nor into those that a scan for projects skips.
    [[nodiscard]] static QStringList findRepos(const QString& folder);

private:
    [[nodiscard]] GitOutcome<void> perform(
        const QString& folder, const GitArguments& arguments, GitRunner::Limit limit) const;
    [[nodiscard]] GitOutcome<void> runOn(
        const QString& repository, const GitArguments& arguments, const QStringList& paths) const;
    [[nodiscard]] GitOutcome<QByteArray> statusOutput(const QString& repository, const QString& below = {}) const;
    [[nodiscard]] GitOutcome<QStringList> conflictedPaths(const QString& repository) const;
    /// The conflicts, where there are any, else what the result means.
    [[nodiscard]] GitError errorWithConflicts(const QString& repository, const GitResult& result) const;
    [[nodiscard]] GitOutcome<void> runWithConflicts(
        const QString& repository, const GitArguments& arguments, GitRunner::Limit limit) const;
    [[nodiscard]] GitOutcome<void> writeCommit(
        const QString& repository, const GitArguments& arguments, const QString& summary,
        const QString& description) const;
    enum class PatchTarget { index, workTree };
    [[nodiscard]] GitOutcome<void> applyLines(
        const QString& repository, const DiffRequest& request, const FileDiff& shown, const DiffSelection& selection,
        PatchTarget target, PatchDirection direction) const;
    [[nodiscard]] GitOutcome<void> runOnStash(
        const QString& repository, const char* verb, const StashEntry& entry) const;
    [[nodiscard]] GitOutcome<std::optional<QString>> configValue(
        const QString& folder, const GitArguments& scope, const QString& key) const;
    [[nodiscard]] GitOutcome<GitIdentity> identityOf(const QString& folder, const GitArguments& scope) const;
};

/// Whether git takes the name for a branch (git-check-ref-format(1)).
[[nodiscard]] bool isBranchName(const QString& name);
/// Refused, with a sentence, when it is none.
[[nodiscard]] GitOutcome<void> requireBranchName(const QString& name);
/// Whether it can be the name of a new folder.
[[nodiscard]] bool isFolderName(const QString& name);
/// The folder into which git would clone the URL ("https://host/a/tool.git" into "tool"); empty when there is none in
/// it.
[[nodiscard]] QString folderNameOfUrl(const QString& url);

} // namespace orv
