#pragma once

#include "CliSupport.h"
#include "OrvGit/GitService.h"
#include "SignalWatcher.h"

#include <functional>

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
    return exitCodeOf(outcome, call.context, [&call, line, print = std::move(print)](const auto& result) -> int {
        delete line;
        return result ? print(*result) : call.failure(result.error().text());
    });
}

QFuture<int> gitStatus(Invocation& call);
QFuture<int> gitLog(Invocation& call);
QFuture<int> gitDiff(Invocation& call);
QFuture<int> gitBranch(Invocation& call);
QFuture<int> gitClone(Invocation& call);

} // namespace orv
