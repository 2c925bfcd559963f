#include "CliGit_p.h"
#include "OrvGit/DiscardedWork.h"

#include <QFile>

#include <unistd.h>

// Discarding, which is not done behind anybody's back where it can't be taken back.

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// How a discard ended.
struct Discarded {
    std::optional<RepositoryState> state; ///< absent when nothing was discarded
    QString whyNotKept;
};

enum class Loss { refused, accepted };

QFuture<int> discardOnce(Invocation& call, const PlanChange& plan, Loss loss, const std::shared_ptr<QString>& refused) {
    const auto work = [folder = folderMeant(call), plan, loss](const GitService& service) -> GitOutcome<Discarded> {
        const auto repository = repositoryAt(service, folder);
        if (!repository) {
            return std::unexpected(repository.error());
        }
        const auto planned = plan(service, *repository);
        if (!planned) {
            return std::unexpected(planned.error());
        }
        const auto kept = DiscardedWork::keep(service, *repository, planned->paths);
        if (!kept && kept.error().kind == GitError::Kind::cancelled) {
            return std::unexpected(kept.error());
        }
        const QString whyNotKept = kept ? QString() : kept.error().text();
        if (!kept && loss == Loss::refused) {
            return Discarded{{}, whyNotKept};
        }
        if (const auto done = planned->run(service, *repository); !done) {
            return std::unexpected(done.error());
        }
        auto state = stateOf(service, *repository);
        return state ? GitOutcome<Discarded>(Discarded{*std::move(state), whyNotKept}) : std::unexpected(state.error());
    };
    return runGit(call, u"Running git…"_s, work, [&call, refused](const Discarded& done) -> int {
        if (!done.state) {
            *refused = done.whyNotKept;
            return exitFailed;
        }
        if (!done.whyNotKept.isEmpty()) {
            call.note(u"It can't be brought back: "_s + done.whyNotKept);
        }
        if (call.json) {
            printJson(call.console.out, toJson(*done.state));
        } else {
            printState(call.console.out, *done.state);
        }
        return exitOk;
    });
}

/// A question on the terminal; no where there is none.
bool isAgreed(Invocation& call, const QString& question) {
    if (::isatty(STDIN_FILENO) != 1 || !call.console.err.isTerminal()) {
        return false;
    }
    call.console.err.write(question + u" [yes/no] "_s);
    QFile in;
    return in.open(STDIN_FILENO, QIODevice::ReadOnly) && in.readLine().trimmed().toLower() == "yes";
}

} // namespace

QFuture<int> discardAndShow(Invocation& call, const PlanChange& plan) {
    const auto refused = std::make_shared<QString>();
    const Loss loss = call.isSet(u"force"_s) ? Loss::accepted : Loss::refused;
    const auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    const auto finish = [promise](int exitCode) {
        promise->addResult(exitCode);
        promise->finish();
    };
    onFinished(discardOnce(call, plan, loss, refused), call.context, [&call, plan, refused, finish](int exitCode) {
        if (refused->isEmpty()) {
            finish(exitCode);
        } else if (isAgreed(call, u"It could not be brought back: %1 Discard it for good?"_s.arg(*refused))) {
            onFinished(discardOnce(call, plan, Loss::accepted, refused), call.context, finish);
        } else {
            finish(call.failure(
                u"nothing was discarded, for it could not be brought back: %1 --force discards it for good."_s.arg(
                    *refused)));
        }
    });
    return promise->future();
}

QFuture<int> gitDiscard(Invocation& call) {
    if (call.isSet(u"hunk"_s)) {
        return gitHunks(call, &GitService::discardLines, DiffSide::unstaged);
    }
    const auto plan = [folder = folderMeant(call), words = call.words](
                          const GitService& service, const QString& repository) -> GitOutcome<PlannedChange> {
        const auto named = pathsIn(repository, folder, words);
        if (!named) {
            return std::unexpected(named.error());
        }
        const auto status = service.status(repository);
        if (!status) {
            return std::unexpected(status.error());
        }
        QStringList paths;
        for (const FileChange& each : status->changes) {
            // A new file at a rename's old name is other work, unless it was asked for too.
            for (const QString& path : each.touchedPaths()) {
                if (isBelow(path, *named)) {
                    paths.append(path);
                }
            }
        }
        paths.removeDuplicates();
        if (paths.isEmpty()) {
            return std::unexpected(GitError::refused(u"nothing is changed there."_s));
        }
        return PlannedChange{
            paths, [paths](const GitService& git, const QString& place) { return git.discard(place, paths); }};
    };
    return discardAndShow(call, plan);
}

} // namespace orv
