#pragma once

#include "CliSupport.h"
#include "OrvGit/GitService.h"
#include "SignalWatcher.h"

#include <functional>
#include <optional>

namespace orv {

// What the git commands share.

/// Words of paths that a call may have.
inline constexpr int anyNumber = 100'000;
/// Names the folder of the repository; the current one without it.
extern const CommandOption inOption;

/// The repository that the folder is, lies in, or has as the only one in it.
[[nodiscard]] GitOutcome<QString> repositoryAt(const GitService& service, const QString& folder);
/// The repositories of a project or folder: those in it, else the one that it lies in. Refused when there is none.
[[nodiscard]] GitOutcome<QStringList> repositoriesAt(const GitService& service, const QString& folder);
/// The folder that "--in" names, or the current one.
[[nodiscard]] QString folderMeant(const Invocation& call);
/// Runs `run` with the folder of the project that the first word means, or with the current one.
[[nodiscard]] QFuture<int> withFolder(Invocation& call, const std::function<QFuture<int>(const QString& folder)>& run);
/// Words of the command line, which count from the folder, as paths in the repository.
[[nodiscard]] GitOutcome<QStringList> pathsIn(
    const QString& repository, const QString& folder, const QStringList& words);

/// Whether the path is one of the paths, or lies below one; "." is the top.
[[nodiscard]] bool isBelow(const QString& path, const QStringList& paths);

/// What a repository is like: its status and what is in progress.
struct RepositoryState {
    QString repository;
    RepoStatus status;
    OperationState operation;
};
[[nodiscard]] GitOutcome<RepositoryState> stateOf(const GitService& service, const QString& repository);
[[nodiscard]] QJsonValue toJson(const RepositoryState& state);
void printState(Stream& out, const RepositoryState& state);
[[nodiscard]] QString operationName(GitOperation operation);

/// Runs `work` with git off the main thread, then `print` with what came of it, which gives the exit code. Ctrl-C ends
/// git. A failure is printed.
template <typename Work, typename Print>
QFuture<int> runGit(Invocation& call, const QString& progress, Work work, Print print) {
    GitService service;
    service.runner.cancellation.emplace();
    auto* watcher = new SignalWatcher(call.context);
    QObject::connect(watcher, &SignalWatcher::stopAsked, call.context, [cancellation = *service.runner.cancellation] {
        cancellation.cancel();
    });
    auto* line = new Progress(call.console.err, progress, call.context);
    const auto outcome = runInPool([service, work = std::move(work)] { return work(service); });
    return exitCodeOf(
        outcome, call.context, [&call, line, watcher, print = std::move(print)](const auto& result) -> int {
            delete line;
            delete watcher;
            return result ? print(*result) : call.failure(result.error().text());
        });
}

/// Changes the repository, then prints what it is like.
template <typename Change>
QFuture<int> changeAndShow(Invocation& call, const QString& progress, Change change) {
    const auto work = [folder = folderMeant(call),
                       change = std::move(change)](const GitService& service) -> GitOutcome<RepositoryState> {
        const auto repository = repositoryAt(service, folder);
        if (!repository) {
            return std::unexpected(repository.error());
        }
        if (const GitOutcome<void> done = change(service, *repository); !done) {
            return std::unexpected(done.error());
        }
        return stateOf(service, *repository);
    };
    return runGit(call, progress, work, [&call](const RepositoryState& state) -> int {
        if (call.json) {
            printJson(call.console.out, toJson(state));
        } else {
            printState(call.console.out, state);
        }
        return exitOk;
    });
}

/// What is about to be done to these paths.
struct PlannedChange {
    QStringList paths;
    std::function<GitOutcome<void>(const GitService&, const QString& repository)> run;
};
using PlanChange = std::function<GitOutcome<PlannedChange>(const GitService&, const QString& repository)>;
/// Keeps what is discarded, does it, and prints what the repository is like. What can't be kept is discarded only with
/// "--force", or when whoever sits at the terminal says yes.
[[nodiscard]] QFuture<int> discardAndShow(Invocation& call, const PlanChange& plan);

using LinesMethod =
    GitOutcome<void> (GitService::*)(const QString&, const DiffRequest&, const FileDiff&, const DiffSelection&) const;

QFuture<int> gitStatus(Invocation& call);
QFuture<int> gitLog(Invocation& call);
QFuture<int> gitDiff(Invocation& call);
QFuture<int> gitBranch(Invocation& call);
QFuture<int> gitClone(Invocation& call);
QFuture<int> gitDiscard(Invocation& call);
QFuture<int> gitStash(Invocation& call);
QFuture<int> gitIdentity(Invocation& call);
/// Does it with the hunks that "--hunk" names, of the one file that the words name. `side`: where they are looked for;
/// the file may be an untracked one, too, where that is not the index.
QFuture<int> gitHunks(Invocation& call, LinesMethod method, DiffSide side);

} // namespace orv
